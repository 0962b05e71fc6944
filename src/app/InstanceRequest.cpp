#include "app/InstanceRequest.h"

#include <array>
#include <utility>

namespace kestrant {
namespace {

using Action = InstanceRequest::Action;

constexpr std::array<std::pair<Action, const char*>, 4> names{{
    {Action::show, "show"},
    {Action::toggle, "toggle"},
    {Action::newReminder, "new-reminder"},
    {Action::search, "search"},
}};

}  // namespace

QString nameOf(InstanceRequest::Action action) {
    for (const auto& [known, name] : names)
        if (known == action)
            return QString::fromLatin1(name);
    return {};
}

std::optional<InstanceRequest::Action> actionNamed(const QString& name) {
    for (const auto& [action, known] : names)
        if (name == QLatin1String(known))
            return action;
    return {};
}

QByteArray lineOf(const InstanceRequest& request) {
    QByteArray line = nameOf(request.action).toLatin1();
    if (!request.text.isEmpty())
        line += ' ' + request.text.toUtf8().toPercentEncoding();
    return line;
}

std::optional<InstanceRequest> requestOf(const QByteArray& line) {
    const qsizetype blank = line.indexOf(' ');
    const auto action = actionNamed(QString::fromUtf8(line.first(blank < 0 ? line.size() : blank)));
    if (!action)
        return {};
    const QByteArray text =
        blank < 0 ? QByteArray() : QByteArray::fromPercentEncoding(line.sliced(blank + 1));
    return InstanceRequest{*action, QString::fromUtf8(text).left(InstanceRequest::longestText)};
}

}  // namespace kestrant
