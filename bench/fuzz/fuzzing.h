#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process, which libFuzzer reports together with the input that led there.
#define KESTRANT_REQUIRE(condition)                                                                          \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition);                     \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)
