// A shared library that is loaded when it is first needed: what a command does not use costs it no start.
#pragma once

namespace synth {

class Library {
 public:
  explicit Library(const char* soname);
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  bool loaded() const { return handle_; }
  // Sets `function` to the function of that name, null where there is none.
  template <class Function>
  void find(const char* name, Function*& function) const {
    function = reinterpret_cast<Function*>(symbol(name));
  }

 private:
  void* symbol(const char* name) const;

  void* handle_;  // stays loaded for the process
};

}  // namespace synth
