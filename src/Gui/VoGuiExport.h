#pragma once

// As VOCORE_EXPORT, for the library that shows.
#if defined(_WIN32)
#if defined(VOCOREGUI_BUILDING)
#define VOCOREGUI_EXPORT __declspec(dllexport)
#else
#define VOCOREGUI_EXPORT __declspec(dllimport)
#endif
#else
#define VOCOREGUI_EXPORT __attribute__((visibility("default")))
#endif
