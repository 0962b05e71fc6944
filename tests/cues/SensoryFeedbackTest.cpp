#include "cues/SensoryFeedback.h"

#include "preferences/PreferenceKeys.h"
#include "support/MemoryUserDefaults.h"

#include <gtest/gtest.h>

namespace kestrant::test {
namespace {

struct Recorder : CuePlayer, HapticPerformer {
    void prepare() override {}
    void play(Cue) override { ++sounds; }
    void perform(HapticPattern, HapticProfile) override { ++touches; }

    int sounds = 0;
    int touches = 0;
};

TEST(SensoryFeedback, FollowsEachProfileAsItIsNowAndTakesAValueOfTheWrongTypeForNone) {
    struct Case {
        const char* name;
        std::function<void(MemoryUserDefaults&)> prepare;
        int sounds;
        int touches;
    };
    namespace keys = preferenceKeys;
    const std::vector<Case> cases{
        {"nothing is stored", [](auto&) {}, 1, 1},
        {"sounds are off", [](auto& defaults) { defaults.set(keys::soundEffectsProfile, 0); }, 0, 1},
        {"haptics are off", [](auto& defaults) { defaults.set(keys::hapticFeedbackProfile, 0); }, 1, 0},
        {"the older switches are off",
         [](auto& defaults) {
             defaults.set(keys::soundEffectsEnabled, false);
             defaults.set(keys::hapticsEnabled, false);
         },
         0, 0},
        {"the profiles are texts and the switches numbers",
         [](auto& defaults) {
             defaults.set(keys::soundEffectsProfile, QStringLiteral("0"));
             defaults.set(keys::hapticFeedbackProfile, QStringLiteral("0"));
             defaults.set(keys::soundEffectsEnabled, 0);
             defaults.set(keys::hapticsEnabled, 0);
         },
         1, 1},
    };
    for (const Case& one : cases) {
        MemoryUserDefaults defaults;
        const Preferences preferences(defaults, [] { return QLocale::c(); });
        Recorder recorder;
        const SensoryFeedback feedback(preferences, recorder, recorder);
        one.prepare(defaults);
        feedback.play(Cue::snap);
        feedback.performHaptic(HapticPattern::generic);
        EXPECT_EQ(recorder.sounds, one.sounds) << one.name;
        EXPECT_EQ(recorder.touches, one.touches) << one.name;
    }
}

}  // namespace
}  // namespace kestrant::test
