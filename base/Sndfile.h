// libsndfile, loaded when a file in one of its formats is first read or written.
#pragma once

#include <sndfile.h>

#include "base/Library.h"

namespace synth {

struct Sndfile {
  Library library{"libsndfile.so.1"};
  decltype(sf_open)* open = nullptr;
  decltype(sf_open_virtual)* openVirtual = nullptr;
  decltype(sf_readf_float)* read = nullptr;
  decltype(sf_writef_int)* write = nullptr;
  decltype(sf_close)* close = nullptr;
  decltype(sf_error)* error = nullptr;

  Sndfile() {
    library.find("sf_open", open);
    library.find("sf_open_virtual", openVirtual);
    library.find("sf_readf_float", read);
    library.find("sf_writef_int", write);
    library.find("sf_close", close);
    library.find("sf_error", error);
  }
  // Whether all of it is there; nothing may be called otherwise.
  bool whole() const { return open && openVirtual && read && write && close && error; }
};

// Stays loaded for the process.
inline const Sndfile& sndfile() {
  static const Sndfile* const loaded = new Sndfile;
  return *loaded;
}

}  // namespace synth
