#pragma once

#include "foundation/Text.h"

#include <QObject>

#include <tl/expected.hpp>

namespace kestrant {

class UserDefaults;

/// The desktop's own record of whether it starts this program when the person logs in. Thread: main; reads
/// and writes one small file at most.
class LoginItem {
  public:
    virtual ~LoginItem() = default;
    [[nodiscard]] virtual bool isEnabled() const = 0;
    /// Fails, with a sentence for the person, when the desktop's record cannot be changed; it is then as it
    /// was.
    [[nodiscard]] virtual tl::expected<void, TextPair> setEnabled(bool enabled) = 0;
};

/// Whether the program starts with the session, as the desktop has it: another program may change it too, so
/// refresh() before showing it. Mirrors it in the preferences. Thread: main.
class LaunchAtLoginManager : public QObject {
    Q_OBJECT

  public:
    /// Both must outlive this object. Reads nothing yet.
    LaunchAtLoginManager(LoginItem& item, UserDefaults& defaults);

    /// As it was last refreshed or set.
    [[nodiscard]] bool isEnabled() const { return isEnabled_; }
    /// Takes over what the desktop has.
    void refresh();
    /// Fails with a sentence for the person; isEnabled() then tells what the desktop has.
    [[nodiscard]] tl::expected<void, TextPair> setEnabled(bool enabled);

  Q_SIGNALS:
    void isEnabledChanged();

  private:
    LoginItem& item_;
    UserDefaults& defaults_;
    bool isEnabled_ = false;
};

}  // namespace kestrant
