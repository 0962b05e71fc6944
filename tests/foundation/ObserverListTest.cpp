#include "foundation/ObserverList.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace kestrant {
namespace {

using testing::ElementsAre;

TEST(ObserverList, TellsInOrderAndHeedsWhatObserversDoToItMeanwhile) {
    auto list = std::make_unique<ObserverList<int>>();
    std::vector<std::string> told;
    Subscription second;
    Subscription late;
    const Subscription first = list->add([&](int value) {
        told.push_back("first " + std::to_string(value));
        second.cancel();
        if (value == 1)
            late = list->add([&](int number) { told.push_back("late " + std::to_string(number)); });
    });
    second = list->add([&](int) { told.emplace_back("second"); });
    Subscription last = list->add([&](int value) {
        told.push_back("last " + std::to_string(value));
        if (value == 2) {
            last.cancel();
            list.reset();
        }
    });
    list->notify(1);
    EXPECT_THAT(told, ElementsAre("first 1", "last 1"));
    told.clear();
    list->notify(2);
    EXPECT_THAT(told, ElementsAre("first 2", "last 2", "late 2"));
    EXPECT_EQ(list, nullptr);
}

}  // namespace
}  // namespace kestrant
