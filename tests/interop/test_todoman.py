import datetime
import json

from interop import InteropTest, main, unfolded


def instant(text):
    return datetime.datetime.fromisoformat(text.replace("Z", "+00:00")).timestamp()


class TodomanTest(InteropTest):
    def setUp(self):
        super().setUp()
        settings = self.home / "todoman.py"
        settings.write_text(
            f'path = "{self.store}/*"\ndate_format = "%Y-%m-%d"\ntime_format = "%H:%M"\ndefault_list = "Work"\n'
            f'cache_path = "{self.home}/todoman.sqlite3"\n'
        )
        self.settings = settings

    def todoman(self, *arguments):
        return self.run_program("todoman", "--config", self.settings, *arguments)

    def todos(self):
        """What todoman shows, by title."""
        done = self.todoman("--porcelain", "list")
        self.assertEqual(done.stderr, "")
        return {todo["summary"]: todo for todo in json.loads(done.stdout)}

    def test_kestrant_reads_what_todoman_writes(self):
        self.todoman("new", "--list", "Work", "--due", "2026-03-27 14:30", "--priority", "high", "Écrire; une lettre, longue")
        self.todoman("new", "--list", "Work", "--due", "2026-03-28", "Pay the rent")
        self.todoman("new", "--list", "Work", "No date at all")
        self.todoman("done", str(self.todos()["No date at all"]["id"]))
        shown = self.reminders()
        self.assertEqual(sorted(shown), ["Pay the rent", "Écrire; une lettre, longue"])
        letter, rent = shown["Écrire; une lettre, longue"], shown["Pay the rent"]
        self.assertEqual((letter["dueDate"], letter["dueDateIncludesTime"]), ("2026-03-27T13:30:00Z", True))
        self.assertTrue(1 <= letter["priority"] <= 4, letter["priority"])
        self.assertEqual((rent["dueDate"], rent["dueDateIncludesTime"]), ("2026-03-28", False))

    def test_todoman_reads_what_kestrant_writes(self):
        self.kestrant("add", "Écrire; une lettre, longue \\ retour", "--due", "2026-03-27T14:30", "--priority", "high")
        self.kestrant("add", "Pay the rent", "--due", "2026-03-28")
        self.kestrant("add", "No date at all", "--priority", "low")
        todos = self.todos()
        self.assertEqual(sorted(todos), ["No date at all", "Pay the rent", "Écrire; une lettre, longue \\ retour"])
        letter = todos["Écrire; une lettre, longue \\ retour"]
        self.assertEqual(letter["due"], instant("2026-03-27T13:30:00Z"))
        self.assertTrue(1 <= letter["priority"] <= 4, letter["priority"])
        self.assertEqual(todos["Pay the rent"]["due"], instant("2026-03-28T00:00:00+01:00"))
        self.assertTrue(6 <= todos["No date at all"]["priority"] <= 9)
        self.kestrant("complete", self.identifier("Pay the rent"))
        self.kestrant("delete", self.identifier("No date at all"))
        self.assertEqual(list(self.todos()), ["Écrire; une lettre, longue \\ retour"])

    def test_a_due_time_in_another_zone_is_the_same_moment_in_both(self):
        self.write(self.work, "tokyo", "VTODO", "SUMMARY:Call Tokyo", "DUE;TZID=Asia/Tokyo:20260328T090000")
        self.write(self.work, "gap", "VTODO", "SUMMARY:After the clocks change", "DUE;TZID=Europe/Paris:20260329T033000")
        todos = self.todos()
        for title, task in self.reminders().items():
            self.assertEqual(todos[title]["due"], instant(task["dueDate"]), title)

    def test_both_complete_the_same_list_by_turns(self):
        path = self.write(self.work, "first", "VTODO", "SUMMARY:First", "X-SOMEBODY-ELSE;X-P=1:keep", "CATEGORIES:a,b")
        self.write(self.work, "second", "VTODO", "SUMMARY:Second")
        self.kestrant("complete", self.identifier("First"))
        self.assertEqual(list(self.todos()), ["Second"])
        lines = unfolded(path.read_bytes().decode())
        self.assertIn("X-SOMEBODY-ELSE;X-P=1:keep", lines)
        self.assertIn("CATEGORIES:a,b", lines)
        self.todoman("done", str(self.todos()["Second"]["id"]))
        self.assertEqual(self.reminders(), {})
        # What one has written the other can still change.
        self.kestrant("add", "Third")
        self.todoman("edit", str(self.todos()["Third"]["id"]), "--due", "2026-04-02")
        self.assertEqual(self.reminders()["Third"]["dueDate"], "2026-04-02")
        self.kestrant("complete", self.identifier("Third"))
        self.assertEqual(self.todos(), {})

    def test_todoman_sees_what_kestrant_changes_and_nothing_else_is_lost(self):
        home = self.make_list(self.store, "home", "Home", "#0A84FF")
        others = ["X-SOMEBODY-ELSE;X-P=1:keep", "CATEGORIES:a,b", "RELATED-TO:another",
                  "X-LONG:" + "long " * 40, "BEGIN:VALARM", "ACTION:EMAIL", "DESCRIPTION:x", "TRIGGER:-PT10M", "END:VALARM"]
        path = self.write(self.work, "letter", "VTODO", "SUMMARY:Letter", "DUE;TZID=Europe/Paris:20260327T143000", *others)
        for arguments, expected in (
            (["edit", "letter", "--title", "Écrire; une lettre, longue", "--priority", "high"], {"priority": 1}),
            (["edit", "letter", "--notes", "To Anaïs\nand Theo"], {"description": "To Anaïs\nand Theo"}),
            (["reschedule", "letter", "tomorrow 9am"], {"due": instant("2026-03-27T08:00:00Z")}),
            (["reschedule", "letter", "2026-04-02"], {"due": instant("2026-04-02T00:00:00+02:00")}),
            (["flag", "letter"], {"due": instant("2026-04-02T00:00:00+02:00")}),
            (["move", "letter", "Home"], {"list": "Home"}),
            (["reschedule", "letter", "none"], {"due": None}),
        ):
            self.kestrant(*arguments)
            todos = self.todos()
            self.assertEqual(list(todos), ["Écrire; une lettre, longue"])
            for key, value in expected.items():
                self.assertEqual(todos["Écrire; une lettre, longue"][key], value, arguments)
        self.assertFalse(path.exists())
        lines = unfolded((home / "letter.ics").read_bytes().decode())
        for line in others:
            self.assertIn(line, lines)

    def test_a_flag_changes_one_line_and_outlives_an_edit_by_todoman(self):
        def lines():
            kept = (line for line in path.read_bytes().split(b"\r\n")
                    if not line.startswith((b"DTSTAMP", b"CREATED", b"LAST-MODIFIED", b"SEQUENCE")))
            return list(kept)

        path = self.write(self.work, "letter", "VTODO", "SUMMARY:Letter", "X-LONG:" + "word " * 12, " folded here",
                          "CATEGORIES:a,b")
        before = lines()
        self.kestrant("flag", "letter")
        self.assertEqual([line for line in lines() if line not in before], [b"X-PINNED:true"])
        self.todoman("edit", str(self.todos()["Letter"]["id"]), "--due", "2026-04-02")
        self.assertTrue(self.reminders()["Letter"]["isFlagged"])
        self.todoman("done", str(self.todos()["Letter"]["id"]))
        self.kestrant("unflag", "letter")
        self.assertFalse(json.loads(self.kestrant("show", "letter", "--json"))["isFlagged"])
        # Without an edit by another program in between, taking the flag back leaves what was there.
        path = self.write(self.work, "again", "VTODO", "SUMMARY:Again", "X-LONG:" + "word " * 12, " folded here")
        before = lines()
        self.kestrant("flag", "again")
        self.kestrant("unflag", "again")
        self.assertEqual(lines(), before)

    def test_a_recurring_reminder_goes_on_whichever_program_completes_it(self):
        self.write(self.work, "weekly", "VTODO", "SUMMARY:Weekly", "DTSTART;TZID=Europe/Paris:20260326T090000",
                   "DUE;TZID=Europe/Paris:20260326T100000", "RRULE:FREQ=WEEKLY")
        self.kestrant("complete", self.identifier("Weekly"))
        # Ten o'clock on the next Thursday, when summer time has begun.
        self.assertEqual(self.reminders()["Weekly"]["dueDate"], "2026-04-02T08:00:00Z")
        self.assertEqual(self.todos()["Weekly"]["due"], instant("2026-04-02T08:00:00Z"))
        self.todoman("done", str(self.todos()["Weekly"]["id"]))
        self.assertEqual(self.reminders()["Weekly"]["dueDate"], "2026-04-09T08:00:00Z")
        self.assertEqual(self.todos()["Weekly"]["due"], instant("2026-04-09T08:00:00Z"))
        self.kestrant("complete", self.identifier("Weekly"))
        self.assertEqual(self.todos()["Weekly"]["due"], instant("2026-04-16T08:00:00Z"))
        completed = [path for path in self.work.glob("*.ics") if b"STATUS:COMPLETED" in path.read_bytes()]
        self.assertEqual(len(completed), 3, "each completion stays on record")


if __name__ == "__main__":
    main("todoman")
