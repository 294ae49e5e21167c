// Stands for the target that compiles PrecompiledHeaders.h.
