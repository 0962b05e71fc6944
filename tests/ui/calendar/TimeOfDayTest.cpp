#include "ui/calendar/TimeOfDay.h"

#include <gtest/gtest.h>

#include <vector>

using namespace kestrant;

namespace {

TEST(TimeOfDay, IsReadAsPeopleTypeIt) {
    struct Case {
        const char16_t* typed;
        QTime time;
    };
    const std::vector<Case> cases{
        {u"9", QTime(9, 0)},
        {u"9:30", QTime(9, 30)},
        {u" 09.05 ", QTime(9, 5)},
        {u"9h", QTime(9, 0)},
        {u"9h30", QTime(9, 30)},
        {u"9 h 30", QTime(9, 30)},
        {u"930", QTime(9, 30)},
        {u"1830", QTime(18, 30)},
        {u"0:00", QTime(0, 0)},
        {u"23:59", QTime(23, 59)},
        {u"9 pm", QTime(21, 0)},
        {u"12am", QTime(0, 0)},
        {u"12:15 PM", QTime(12, 15)},
        {u"2:05\u00a0PM", QTime(14, 5)},
        {u"", {}},
        {u"24", {}},
        {u"9:60", {}},
        {u"9:3", {}},
        {u"13 pm", {}},
        {u"noon", {}},
        {u"-1", {}},
        {u"12345", {}},
    };
    for (const Case& c : cases) {
        const auto time = timeOfDay(c.typed);
        EXPECT_EQ(time.value_or(QTime()), c.time) << QString::fromUtf16(c.typed).toStdString();
    }
}

}  // namespace
