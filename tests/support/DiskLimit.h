#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

namespace kestrant {

/// No file may grow beyond so many bytes while this lasts.
class DiskLimit {
  public:
    explicit DiskLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &before_), 0);
        const rlimit limit{bytes, before_.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    DiskLimit(const DiskLimit&) = delete;
    DiskLimit& operator=(const DiskLimit&) = delete;
    ~DiskLimit() { EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &before_), 0); }

  private:
    rlimit before_{};
};

}  // namespace kestrant
