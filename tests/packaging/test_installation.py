"""Installs the program into a folder and has the programs that read what is beside it look at it."""

import os
import pathlib
import re
import shutil
import struct
import subprocess
import tempfile
import unittest

BUILD = os.environ.get("BUILD", str(pathlib.Path(__file__).resolve().parents[2] / "build/dev"))
NAME = "com.kestrant.notchapp"


def needs(program):
    return unittest.skipUnless(shutil.which(program), f"{program} is not installed")


class InstallationTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.home = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="kestrant-installed-")))
        cls.prefix = cls.home / "prefix"
        cls.share = cls.prefix / "share"
        cls.environment = {"PATH": f"{cls.prefix}/bin:{os.environ['PATH']}", "HOME": str(cls.home), "LC_ALL": "C.UTF-8"}
        cls.run_program(os.environ.get("CMAKE", "cmake"), "--install", BUILD, "--prefix", cls.prefix)
        cls.store = f"vdir:{cls.home}/store"
        (cls.home / "store/home").mkdir(parents=True)
        (cls.home / "store/home/displayname").write_text("Maison")
        cls.milk = cls.run_program("kestrant", "add", "Buy: milk", "--literal", "--store", cls.store).strip()
        cls.help = cls.run_program("kestrant", "--help")

    @classmethod
    def run_program(cls, *arguments):
        """What a program prints that succeeds and complains of nothing."""
        done = subprocess.run([str(a) for a in arguments], env=cls.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              text=True, timeout=120, check=False)
        if done.returncode or done.stderr:
            raise AssertionError(f"{arguments}: {done.returncode}\n{done.stdout}{done.stderr}")
        return done.stdout

    def commands_and_options(self):
        commands = set(re.findall(r"^  ([a-z][a-z-]+)", self.help, re.MULTILINE)) | set(re.findall(r"\b(unflag)\b", self.help))
        options = set(re.findall(r"--[a-z][a-z-]*", self.help))
        self.assertTrue({"add", "delete-event", "unflag"} <= commands and {"--literal", "--toggle"} <= options)
        return commands, options

    @needs("desktop-file-validate")
    def test_the_desktop_entry_is_valid_and_names_what_is_installed(self):
        entry = self.share / f"applications/{NAME}.desktop"
        self.assertEqual(self.run_program("desktop-file-validate", entry), "")
        for program in re.findall(r"^(?:Try)?Exec=(\S+)", entry.read_text(), re.MULTILINE):
            self.assertTrue((self.prefix / "bin" / program).exists())
        self.assertIn(f"\nIcon={NAME}\n", entry.read_text())

    @needs("appstreamcli")
    def test_software_centres_accept_the_description(self):
        description = self.share / "metainfo/com.kestrant.notchapp.metainfo.xml"
        self.run_program("appstreamcli", "validate", "--no-net", "--pedantic", description)
        version = self.run_program("kestrant", "--version").split()[1]
        self.assertIn(f'<release version="{version}"', description.read_text())

    def test_every_icon_has_the_size_of_its_folder(self):
        icons = self.share / "icons/hicolor"
        self.assertTrue((icons / f"scalable/apps/{NAME}.svg").exists())
        sizes = []
        for icon in icons.glob(f"*/apps/{NAME}.png"):
            width, height = struct.unpack(">II", icon.read_bytes()[16:24])
            self.assertEqual(icon.parts[-3], f"{width}x{height}")
            sizes.append(width)
        self.assertEqual(sorted(sizes), [16, 22, 24, 32, 48, 64, 128, 256, 512])

    @needs("man")
    def test_the_manual_is_sound_and_tells_every_command_and_option(self):
        page = self.share / "man/man1/kestrant.1"
        done = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", page], stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE, text=True, check=True)
        self.assertEqual(done.stderr, "")
        told = page.read_text().replace("\\-", "-")
        for names in self.commands_and_options():
            for name in names:
                self.assertRegex(told, rf"(?<![a-z-]){name}(?![a-z-])")

    def test_completions_know_every_command_and_option(self):
        commands, options = self.commands_and_options()
        for path in ("bash-completion/completions/kestrant", "zsh/site-functions/_kestrant",
                     "fish/vendor_completions.d/kestrant.fish"):
            known = (self.share / path).read_text()
            for name in commands | options:
                if path.endswith(".fish") and name.startswith("--"):
                    name = f"--long-option {name[2:]}"
                self.assertRegex(known, rf"(?<![a-z-]){name}(?![a-z-])", path)

    @needs("zsh")
    def test_zsh_reads_its_completions(self):
        self.run_program("zsh", "-n", self.share / "zsh/site-functions/_kestrant")

    def assert_completes(self, complete, describes):
        """That a shell, which `complete` asks with a line, offers what fits; some tell a title beside an identifier."""
        for line, expected in (
            ("kestrant resch", ["reschedule"]),
            ("kestrant edit x --pri", ["--priority"]),
            ("kestrant edit x --priority ", ["high", "low", "none", "normal"]),
            ("kestrant add x --priority ", ["high", "low", "normal"]),
            (f"kestrant --store {self.store} flag ", [self.milk]),
            (f"kestrant move {self.milk} --store {self.store} ", ["home"]),
            ("kestrant reschedule x t", ["today", "tomorrow"]),
            ("kestrant flag x ", []),
        ):
            offered = complete(line)
            self.assertEqual(sorted(row.split("\t")[0] for row in offered), expected, line)
            if describes and expected == [self.milk]:
                self.assertEqual(offered, [f"{self.milk}\tBuy: milk"])

    @unittest.skipUnless(pathlib.Path("/usr/share/bash-completion/bash_completion").exists(), "bash-completion is missing")
    def test_bash_completes(self):
        script = ('source /usr/share/bash-completion/bash_completion; source "$1"; shift; COMP_LINE=$1; shift; '
                  'COMP_POINT=${#COMP_LINE}; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); compopt() { :; }; _kestrant; '
                  'printf "%s\\n" "${COMPREPLY[@]}"')

        def complete(line):
            # As the shell takes a line apart, which breaks words at colons and equals signs too.
            words = re.findall(r"[:=]+|[^\s:=]+", line) + ([""] if line.endswith(" ") else [])
            return self.run_program("bash", "--norc", "-c", script, "bash", self.share / "bash-completion/completions/kestrant",
                                    line, *words).split()

        self.assert_completes(complete, describes=False)

    @needs("fish")
    def test_fish_completes(self):
        def complete(line):
            return self.run_program("fish", "--no-config", "-c", "source $argv[1]; complete --do-complete $argv[2]",
                                    self.share / "fish/vendor_completions.d/kestrant.fish", line).splitlines()

        self.assert_completes(complete, describes=True)


if __name__ == "__main__":
    unittest.main(verbosity=2)
