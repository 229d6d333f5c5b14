// The source of the library that owns the test programs' precompiled headers: a library needs one.
