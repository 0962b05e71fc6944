#include "calendar/EventLinks.h"

#include <QString>

#include <gtest/gtest.h>

#include <vector>

using namespace kestrant;

namespace {

TEST(EventLinks, FindsWhatMayBeOpenedInAText) {
    struct Case {
        const char* text;
        std::vector<const char*> links;
    };
    for (const Case& each : {
             Case{"See https://a.example/x?y=1&z=2#f, then http://b.example.",
                  {"https://a.example/x?y=1&z=2#f", "http://b.example"}},
             Case{"(https://a.example/wiki_(page)) <https://b.example/>",
                  {"https://a.example/wiki_(page)", "https://b.example/"}},
             Case{"\"https://a.example/q\"; « https://b.example/é »!",
                  {"https://a.example/q", "https://b.example/é"}},
             Case{"mailto:a@b.example or tel:+33123456789; HTTPS://C.example",
                  {"mailto:a@b.example", "tel:+33123456789", "HTTPS://C.example"}},
             Case{"https://a.example https://a.example", {"https://a.example"}},
             Case{"javascript:alert(1) file:///etc/passwd data:text/html,x smb://host vbscript:x "
                  "ftp://a.example",
                  {}},
             Case{"xhttps://a.example notmailto:a@b https:// http:///path tel: mailto:", {}},
             Case{"12:30 room: a; no address", {}},
         }) {
        QStringList expected;
        for (const char* link : each.links)
            expected.append(QString::fromUtf8(link));
        EXPECT_EQ(linksIn(QString::fromUtf8(each.text)), expected) << each.text;
    }
    EXPECT_TRUE(linksIn(QStringLiteral("https://a.example/").repeated(5000)).isEmpty())
        << "no address is that long";
}

TEST(EventLinks, FindsWhereAMeetingTakesPlace) {
    struct Case {
        const char* url;
        const char* location;
        const char* notes;
        const char* link;
    };
    for (const Case& each : {
             Case{"https://a.example/1", "", "", "https://a.example/1"},
             Case{"", "https://b.example/room", "", "https://b.example/room"},
             Case{"", "Room 4", "Slides: https://docs.example/slides", ""},
             Case{"", "Room 4", "Slides: https://docs.example/slides\nhttps://meet.example.org/abc",
                  "https://meet.example.org/abc"},
             Case{"", "", "Rejoindre la réunion : https://c.example/9", "https://c.example/9"},
             Case{"https://tickets.example/7", "", "Join: https://c.example/9", "https://c.example/9"},
             Case{"mailto:a@b.example", "tel:+33123456789", "Call tel:+33123456789", ""},
             Case{"javascript:join()", "", "meeting notes in https-land", ""},
         }) {
        EKEventData event;
        event.url = QString::fromUtf8(each.url);
        event.location = QString::fromUtf8(each.location);
        event.notes = QString::fromUtf8(each.notes);
        EXPECT_EQ(meetingLink(event), QString::fromUtf8(each.link))
            << each.url << each.location << each.notes;
    }
}

}  // namespace
