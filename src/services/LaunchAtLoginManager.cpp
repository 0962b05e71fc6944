#include "services/LaunchAtLoginManager.h"

#include "foundation/UserDefaults.h"
#include "preferences/PreferenceKeys.h"

#include <utility>

namespace kestrant {

LaunchAtLoginManager::LaunchAtLoginManager(LoginItem& item, UserDefaults& defaults)
    : item_(item)
    , defaults_(defaults) {}

void LaunchAtLoginManager::refresh() {
    const bool enabled = item_.isEnabled();
    // A program that was never asked to start with the session leaves no trace of it.
    if (defaults_.boolean(preferenceKeys::launchAtLogin).value_or(false) != enabled)
        defaults_.set(preferenceKeys::launchAtLogin, enabled);
    if (std::exchange(isEnabled_, enabled) != enabled)
        Q_EMIT isEnabledChanged();
}

tl::expected<void, TextPair> LaunchAtLoginManager::setEnabled(bool enabled) {
    auto result = item_.setEnabled(enabled);
    refresh();
    return result;
}

}  // namespace kestrant
