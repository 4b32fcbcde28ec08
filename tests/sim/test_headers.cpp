// Nothing but the precompiled headers of the native tests; CMake builds them with this file's
// target.
