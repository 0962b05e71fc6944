"""The interface sounds, as the real program plays them."""

import math
import os
import tempfile
import unittest

from harness import EXPANDED, HOVERING, IDLE, PROGRAM, DesktopTest, stop, wait_until

from sound_recording import LOG_ENVIRONMENT, SoundServiceRecording, WaveWriterRecording, asked_for, dropped

DRAG_START, EXPAND, COLLAPSE, DROP, FOCUS = (
    "UISFX-Zen-25-drag-start", "UISFX-Zen-23-expand", "UISFX-Zen-24-collapse", "UISFX-Zen-26-drop", "UISFX-Zen-05-focus")

# Of full scale; the softest cue is a hundred times as loud.
SILENCE = 3e-4
# No sound is longer, and what is asked for later than this is never played.
LONGEST_SOUND = 0.3
LATEST_START = 0.2


class SoundTest(DesktopTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desktop.environment.update(LOG_ENVIRONMENT)

    def setUp(self):
        super().setUp()
        self.folder = tempfile.mkdtemp(dir=self.desktop.folder)
        self.log = os.path.join(self.folder, "log")
        # Where OpenAL looks for a person's settings.
        self.sound_settings = self.configuration.parent / "alsoft.conf"
        self.sound_settings.parent.mkdir(parents=True, exist_ok=True)

    def start(self, **preferences):
        self.set_preferences(**preferences)
        with open(self.log, "wb") as log:
            self.program = self.desktop.spawn([PROGRAM], stderr=log)
        self.addCleanup(stop, self.program)
        self.wait_for_panel(IDLE)
        if preferences.get("soundEffectsProfile") != 0:
            self.wait_until_prepared()

    def wait_until_prepared(self):
        wait_until(lambda: " device" in self.text_of_log(), "the sounds are prepared")

    def record(self, recording):
        self.addCleanup(recording.close)
        self.recording = recording

    def record_waves(self):
        self.record(WaveWriterRecording(self.folder, self.sound_settings))

    def text_of_log(self):
        with open(self.log, encoding="utf-8") as log:
            return log.read()

    def wait_for_silence(self):
        """So that the next sound is heard by itself."""

        def has_ended():
            asked = asked_for(self.log)
            return asked and self.recording.end > asked[-1][0] + LATEST_START + LONGEST_SOUND

        wait_until(has_ended, "what was asked for has been played")

    def hover(self):
        self.desktop.move(self.middle, 10)
        self.wait_for_panel(HOVERING)
        self.wait_for_silence()

    def leave(self):
        self.collapse()
        self.wait_for_silence()

    def click(self, size):
        self.desktop.click(self.middle, 10)
        self.wait_for_panel(size)
        self.wait_for_silence()

    def finish(self):
        """The cues that were asked for, after the last of them has been played."""
        self.assertEqual(stop(self.program), 0)
        self.recording.close()
        return asked_for(self.log)

    def played(self):
        """What was asked for and not dropped."""
        left_out = dropped(self.log)
        return [pair for index, pair in enumerate(asked_for(self.log)) if index not in left_out]

    def hear_each(self, expected):
        """Each cue that was asked for, in this order, was played as it was made, and nothing else was. What a busy machine
        dropped, because it would have been late, was not played at all."""
        asked = self.finish()
        self.assertEqual([cue for _, cue in asked], expected)
        played = self.played()
        self.assertTrue(played)
        quiet_from = -math.inf
        for (moment, cue), (following, _) in zip(played, [*played[1:], (math.inf, None)]):
            heard, like, late = self.recording.recognise(moment, min(following - 0.25, moment + 2))
            self.assertEqual(heard, cue, f"asked for {moment}, like it by {like:.2f}")
            self.assertGreater(like, 0.9, f"{cue} sounds as it was made")
            self.assertLess(self.recording.loudest(quiet_from, moment + min(late, 0) - 0.03), SILENCE)
            quiet_from = moment + late + LONGEST_SOUND
        self.assertLess(self.recording.loudest(quiet_from), SILENCE)

    def test_each_phase_is_heard_as_it_begins(self):
        self.record_waves()
        self.start(requiresClickOrSwipeToExpand=True)
        self.hover()
        self.leave()
        self.hover()
        self.click(EXPANDED)
        self.desktop.key("ctrl+f")
        wait_until(lambda: FOCUS in self.text_of_log(), "the search field has the focus")
        self.wait_for_silence()
        self.desktop.key("Escape")
        self.click(HOVERING)
        # Closing with a click was heard, so leaving is not.
        self.leave()
        self.hover()
        self.hear_each([DRAG_START, DROP, DRAG_START, EXPAND, FOCUS, COLLAPSE, DRAG_START])

    def test_the_soft_profile_opens_and_closes_with_the_drag_sounds(self):
        self.record_waves()
        self.start(requiresClickOrSwipeToExpand=True, soundEffectsProfile=2)
        self.hover()
        self.click(EXPANDED)
        self.leave()
        self.hear_each([DRAG_START, DRAG_START, DROP])

    def test_is_silent_while_sounds_are_off(self):
        self.record_waves()
        self.start(soundEffectsProfile=0)
        self.expand()
        self.collapse()
        # What is recorded is known to be all once a sound is in it.
        before = self.text_of_log()
        self.assertNotIn(" device", before, "what plays sounds is not loaded")
        self.set_preferences(soundEffectsProfile=1)
        self.wait_until_prepared()
        self.assertNotIn("asked for", self.text_of_log())

        def is_heard():
            self.expand()
            self.collapse()
            return self.recording.is_loud()

        wait_until(is_heard, "sounds are on")
        asked = self.finish()
        self.assertLess(self.recording.loudest(end=asked[0][0] - 0.03), SILENCE)
        self.assertGreater(self.recording.loudest(), SILENCE)

    def test_works_without_a_sound_device(self):
        self.sound_settings.write_text("[general]\ndrivers = nothing\n")
        self.start(soundEffectsProfile="loud", hapticFeedbackProfile=[])
        self.expand()
        self.collapse()
        self.assertEqual(stop(self.program), 0)
        lines = [line.split(maxsplit=1)[1] for line in self.text_of_log().splitlines()]
        self.assertEqual({line for line in lines if not line.startswith(("asked for", "dropped"))}, {"no device"})

    def test_neither_opening_nor_ending_waits_for_a_sound_service_that_hangs(self):
        self.sound_settings.write_text("[general]\ndrivers = pulse\n")
        self.record(SoundServiceRecording(self.desktop))
        self.start()
        self.recording.hang()
        self.expand()
        self.collapse()
        self.assertEqual(stop(self.program), 0)

    def test_plays_again_when_the_sound_service_has_come_back(self):
        self.sound_settings.write_text("[general]\ndrivers = pulse\n[pulse]\nspawn-server = false\n")
        self.record(SoundServiceRecording(self.desktop))
        self.start(requiresClickOrSwipeToExpand=True)
        self.hover()
        self.recording.close()
        self.collapse()
        self.record(SoundServiceRecording(self.desktop))

        def is_heard():
            self.hover()
            self.leave()
            return self.recording.is_loud()

        wait_until(is_heard, "a cue is heard")
        self.finish()
        asked = self.played()
        heard, like, _ = self.recording.recognise(asked[-1][0], asked[-1][0] + 2)
        self.assertEqual(heard, DROP)
        # What a busy machine tears holes into is heard all the same.
        self.assertGreater(like, 0.8)


if __name__ == "__main__":
    unittest.main()
