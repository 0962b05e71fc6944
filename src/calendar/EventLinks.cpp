#include "calendar/EventLinks.h"

#include <QRegularExpression>
#include <QUrl>

#include <algorithm>
#include <array>
#include <utility>

namespace kestrant {
namespace {

/// Longer texts are searched up to here.
constexpr qsizetype longestText = 20'000;
constexpr qsizetype longestLink = 2'000;

const QRegularExpression& linkPattern() {
    static const QRegularExpression pattern(
        QStringLiteral(R"((?<![\w+.-])(?:https?://|mailto:|tel:)[^\s<>"“”«»\x{0000}-\x{001F}]+)"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    return pattern;
}

/// Without what belongs to the sentence around it.
QString trimmedLink(QString link) {
    const auto closesNothing = [&](QChar closing, QChar opening) {
        return link.endsWith(closing) && link.count(opening) < link.count(closing);
    };
    while (!link.isEmpty() &&
           (QStringLiteral(".,;:!?'’…*_").contains(link.back()) || closesNothing(u')', u'(') ||
            closesNothing(u']', u'[') || closesNothing(u'}', u'{')))
        link.chop(1);
    return link;
}

bool isWebLink(const QString& link) {
    return link.startsWith(QLatin1String("http"), Qt::CaseInsensitive) && isLink(link);
}

/// Whether the words of a host, a path or a sentence are those of meetings.
bool speaksOfMeeting(const QString& words) {
    static const QRegularExpression pattern(
        QStringLiteral(
            R"((?<![^\W_])(?:meet|meetings?|join|calls?|conf|conference|webinars?|visio|)"
            R"(visioconférence|réunion|rejoindre|video|vidéo|bbb|jitsi|zoom|teams|webex|whereby)(?![^\W_]))"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    return pattern.match(words).hasMatch();
}

bool looksLikeMeeting(const QString& link) {
    const QUrl url(link);
    return speaksOfMeeting(url.host()) || speaksOfMeeting(url.path());
}

QString firstWebLink(const QString& text, bool mustSpeakOfMeeting) {
    for (const QString& line : text.left(longestText).split(u'\n')) {
        QString words = line;
        const QStringList links = linksIn(line);
        for (const QString& link : links)
            words.remove(link);
        const bool isAboutMeeting = !mustSpeakOfMeeting || speaksOfMeeting(words);
        const auto found = std::ranges::find_if(links, [&](const QString& link) {
            return isWebLink(link) && (isAboutMeeting || looksLikeMeeting(link));
        });
        if (found != links.end())
            return *found;
    }
    return {};
}

}  // namespace

bool isLink(const QString& address) {
    const QUrl url(address);
    if (address.size() > longestLink || !url.isValid())
        return false;
    const QString scheme = url.scheme();
    if (scheme == QLatin1String("http") || scheme == QLatin1String("https"))
        return !url.host().isEmpty();
    return (scheme == QLatin1String("mailto") || scheme == QLatin1String("tel")) && !url.path().isEmpty();
}

QStringList linksIn(const QString& text) {
    // Most texts have none.
    if (!text.contains(u':'))
        return {};
    QStringList links;
    auto matches = linkPattern().globalMatch(text.left(longestText));
    while (matches.hasNext()) {
        const QString link = trimmedLink(matches.next().captured());
        if (isLink(link) && !links.contains(link))
            links.append(link);
    }
    return links;
}

QString meetingLink(const EKEventData& event) {
    const QString url = event.url ? *event.url : QString();
    const QString location = event.location ? *event.location : QString();
    const QString notes = event.notes ? *event.notes : QString();
    const std::array<std::pair<const QString*, bool>, 5> places{
        {{&url, true}, {&location, true}, {&notes, true}, {&url, false}, {&location, false}}};
    for (const auto& [text, mustSpeakOfMeeting] : places) {
        if (QString link = firstWebLink(*text, mustSpeakOfMeeting); !link.isEmpty())
            return link;
    }
    return {};
}

}  // namespace kestrant
