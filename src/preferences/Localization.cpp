#include "preferences/Localization.h"

#include "preferences/PreferenceKeys.h"

namespace kestrant {

Localization::Localization(const Preferences& preferences)
    : preferences_(preferences)
    , language_(preferences.language()) {
    subscription_ = preferences_.observeChanges([this](const QString& key) {
        if (key != preferenceKeys::language || preferences_.language() == language_)
            return;
        language_ = preferences_.language();
        observers_.notify();
    });
}

}  // namespace kestrant
