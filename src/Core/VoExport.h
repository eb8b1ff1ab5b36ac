#pragma once

// Everything that a user of the library may name carries VOCORE_EXPORT, exception classes and thrown or dynamically
// cast class templates included: without it their type information differs on the two sides of the library's boundary
// and a catch by type misses.
#if defined(_WIN32)
#if defined(VOCORE_BUILDING)
#define VOCORE_EXPORT __declspec(dllexport)
#else
#define VOCORE_EXPORT __declspec(dllimport)
#endif
#else
#define VOCORE_EXPORT __attribute__((visibility("default")))
#endif

// For class templates of whose instantiations each program makes its own. On Windows those are nobody's to import, and
// types are told apart by their names.
#if defined(_WIN32)
#define VOCORE_TEMPLATE_EXPORT
#else
#define VOCORE_TEMPLATE_EXPORT VOCORE_EXPORT
#endif

// For parts that are not installed but that this tree's own tests and tools link to.
#define VOCORE_PRIVATE_EXPORT VOCORE_EXPORT
