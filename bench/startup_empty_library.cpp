/// Exports a function, because a library has to; what counts are the libraries that it needs.
extern "C" int startup_empty_library();

int startup_empty_library() { return 0; }
