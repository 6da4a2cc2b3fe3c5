/// A library with the dependencies of this one. It exports a function because a library must.
extern "C" int startup_empty_library();

int startup_empty_library() { return 0; }
