// Owns the precompiled headers of the test programs: CMake needs a library with at least one source.
