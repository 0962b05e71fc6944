#include "foundation/BackgroundExecutor.h"

#include <utility>

namespace kestrant {

ThreadPoolExecutor::~ThreadPoolExecutor() {
    pool_.clear();
    pool_.waitForDone();
}

void ThreadPoolExecutor::run(std::function<void()> work) {
    pool_.start(std::move(work));
}

}  // namespace kestrant
