#include "base/Library.h"

#include <dlfcn.h>

namespace synth {

Library::Library(const char* soname) : handle_(::dlopen(soname, RTLD_NOW | RTLD_LOCAL)) {}

void* Library::symbol(const char* name) const { return handle_ ? ::dlsym(handle_, name) : nullptr; }

}  // namespace synth
