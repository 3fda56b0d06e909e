"""What a build takes, needs and leaves out, as those see it who configure it.

usage: build_choices_test.py SOURCE [TestClass]
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

SOURCE = ""
DEVELOPERS_PACKAGES = ["GTest", "benchmark", "Doxygen", "Python3"]
# With these, nothing is compiled but to try the compiler.
NO_PROGRAM = "-DSORRELIN_BUILD_TOOL=OFF"
NO_JPEG = "-DCMAKE_DISABLE_FIND_PACKAGE_JPEG=ON"
NO_PKG_CONFIG = "-DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON"


class BuildTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="a build für ")
        self.addCleanup(folder.cleanup)
        self.build = pathlib.Path(folder.name) / "build"

    def configure(self, *arguments, source=None, environment=None):
        """Runs cmake; its output is in self.output, its commands are in self.commands."""
        clean = {name: value for name, value in os.environ.items()
                 if name not in ("CFLAGS", "CXXFLAGS", "LDFLAGS", "CMAKE_GENERATOR")}
        run = subprocess.run(
            ["cmake", "-S", source or SOURCE, "-B", self.build,
             "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", *arguments],
            cwd=source or SOURCE, env={**clean, **(environment or {})}, text=True,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        self.output = run.stdout
        commands = self.build / "compile_commands.json"
        self.commands = json.loads(commands.read_text()) if commands.exists() else []
        return run.returncode == 0

    def row(self, part):
        """The cells of a part's row in the table."""
        line = next(line for line in self.output.splitlines() if line.startswith(f"-- {part}"))
        return [cell.strip() for cell in line.removeprefix("-- ").split("  ") if cell.strip()]

    def option(self, name):
        cache = (self.build / "CMakeCache.txt").read_text()
        return next(line.split("=", 1)[1] for line in cache.splitlines()
                    if line.startswith(f"{name}:"))


class Users(BuildTest):
    def test_a_plain_build_needs_nothing_of_developers(self):
        self.assertTrue(self.configure(*(f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON"
                                         for name in DEVELOPERS_PACKAGES)), self.output)
        folders = {os.path.relpath(command["file"], SOURCE).split(os.sep)[0]
                   for command in self.commands}
        self.assertEqual(folders, {"sorrelin", "siblings", "tools"})

    def test_the_preset_of_users_is_the_plain_build(self):
        self.assertTrue(self.configure(), self.output)
        plain = sorted(command["command"] for command in self.commands)
        self.assertTrue(self.configure("--preset", "release", "--fresh"), self.output)
        self.assertEqual(sorted(command["command"] for command in self.commands), plain)
        for command in plain:
            self.assertNotIn("-Werror", command)
            self.assertIn("-O3", command.split())

    def test_flags_and_generator_of_the_user_hold(self):
        for preset in ([], ["--preset", "release"]):
            self.assertTrue(self.configure("--fresh", *preset, environment={
                "CFLAGS": "-DUSERS_C", "CXXFLAGS": "-DUSERS_CXX -O1", "LDFLAGS": "-Wl,-z,now",
                "CMAKE_GENERATOR": "Unix Makefiles"}), self.output)
            for command in self.commands:
                words = command["command"].split()
                self.assertIn("-DUSERS_C" if command["file"].endswith(".c") else "-DUSERS_CXX",
                              words)
                self.assertEqual([word for word in words if word.startswith("-O")], ["-O1"])
            self.assertEqual(self.option("CMAKE_SHARED_LINKER_FLAGS"), "-Wl,-z,now")
            self.assertEqual(self.option("CMAKE_GENERATOR"), "Unix Makefiles")


class Parts(BuildTest):
    def test_a_part_that_is_not_found_is_left_out_with_its_loss_and_package_named(self):
        self.assertTrue(self.configure(NO_PROGRAM, NO_JPEG), self.output)
        row = self.row("JPEG (rennick)")
        self.assertEqual((row[1], row[3], row[4]), ("no", "libjpeg62-turbo-dev",
                                                    "SORRELIN_RENNICK"))
        self.assertEqual(self.row("Group 4 (cadwick)")[1], "yes")
        self.assertFalse(any("siblings/rennick" in command["file"] for command in self.commands))

    def test_a_part_that_is_asked_for_and_not_found_ends_configuring(self):
        self.assertFalse(self.configure(NO_PROGRAM, NO_JPEG, "-DSORRELIN_RENNICK=ON"))
        self.assertIn("SORRELIN_RENNICK is ON", self.output)
        self.assertIn("libjpeg62-turbo-dev", self.output)

    def test_a_part_that_is_switched_off_is_not_looked_for(self):
        self.assertTrue(self.configure(NO_PROGRAM, "-DSORRELIN_RENNICK=OFF",
                                       "-DSORRELIN_AVERNA=off"), self.output)
        self.assertEqual(self.row("JPEG (rennick)")[1], "off")
        self.assertNotIn("Found JPEG", self.output)
        self.assertEqual(self.row("OCR (averna)")[1], "off")

    def test_one_option_decides_for_all_parts_that_say_nothing(self):
        self.assertTrue(self.configure(NO_PROGRAM, "-DSORRELIN_PARTS=OFF",
                                       "-DSORRELIN_CADWICK=ON"), self.output)
        self.assertEqual(self.row("Group 4 (cadwick)")[1], "yes")
        self.assertEqual(self.row("JPEG (rennick)")[1], "off")

    def test_a_program_without_any_optional_part_can_be_built(self):
        self.assertTrue(self.configure("-DSORRELIN_PARTS=OFF"), self.output)
        for part in ("Group 4", "JPEG (rennick)", "OCR", "JBIG2", "JPEG 2000", "HEIC",
                     "Scanners"):
            self.assertEqual(self.row(part)[1], "off")
        sources = {pathlib.Path(command["file"]).name for command in self.commands}
        self.assertTrue({"main.cpp", "jpeg2000_missing.cpp"} <= sources)
        self.assertFalse({"jpeg2000_file.cpp", "jbig2_decoder.cpp", "heif_module.cpp"} & sources)

    def test_another_value_is_refused(self):
        self.assertFalse(self.configure(NO_PROGRAM, "-DSORRELIN_CADWICK=maybe"))
        self.assertIn("SORRELIN_CADWICK is MAYBE", self.output)


class Subproject(BuildTest):
    """Configured once for all of its tests."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="a host für ")
        cls.addClassCleanup(folder.cleanup)
        cls.shared = cls()
        cls.shared.build = pathlib.Path(folder.name) / "build"
        cls.shared.configure_host()

    def setUp(self):
        self.build, self.output = self.shared.build, self.shared.output
        self.commands = self.shared.commands

    def configure_host(self):
        project = self.build.parent / "host"
        project.mkdir()
        (project / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.25)\n"
            "project(host LANGUAGES CXX)\n"
            f"add_subdirectory(\"{SOURCE}\" sorrelin)\n"
            "add_executable(host host.cpp)\n"
            "target_link_libraries(host PRIVATE sorrelin::sorrelin)\n")
        (project / "host.cpp").write_text("int main() {}\n")
        self.assertTrue(self.configure(NO_PKG_CONFIG, NO_JPEG, source=project), self.output)

    def test_group_4_is_built_with_nothing_but_a_compiler(self):
        subprocess.run(["cmake", "--build", self.build, "--target", "cadwick"], check=True,
                       stdout=subprocess.DEVNULL)
        self.assertTrue((self.build / "sorrelin/lib/libcadwick.so").exists())
        self.assertEqual([self.row(part)[1] for part in ("JPEG", "OCR")], ["no", "no"])

    def test_brings_neither_program_nor_tests_nor_installed_files(self):
        folders = {os.path.relpath(command["file"], SOURCE).split(os.sep)[0]
                   for command in self.commands if command["file"].startswith(SOURCE)}
        self.assertEqual(folders, {"sorrelin", "siblings"})
        prefix = self.build.parent / "prefix"
        subprocess.run(["cmake", "--install", self.build, "--prefix", prefix], check=True,
                       capture_output=True)
        self.assertEqual([path for path in prefix.rglob("*") if path.is_file()], [])


class Packages(unittest.TestCase):
    def run_without_network(self, group):
        """Runs scripts/packages.sh where nothing is installed and nothing can be."""
        with tempfile.TemporaryDirectory(prefix="no network ") as folder:
            for name in ("apt-get", "dpkg-query", "sudo"):
                command = pathlib.Path(folder, name)
                command.write_text("#!/bin/sh\nexit 100\n")
                command.chmod(0o755)
            return subprocess.run(
                [pathlib.Path(SOURCE, "scripts/packages.sh"), group], text=True,
                env={**os.environ, "PATH": f"{folder}:{os.environ['PATH']}"}, check=False,
                stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def test_those_that_cannot_be_installed_are_named(self):
        run = self.run_without_network("build")
        self.assertEqual(run.returncode, 1)
        for package in ("cmake", "zlib1g-dev", "libtesseract-dev"):
            self.assertRegex(run.stderr, f"cannot be installed:.* {package}( |$)")

    def test_a_minimal_build_asks_for_no_optional_part(self):
        run = self.run_without_network("minimal")
        self.assertNotIn("libtesseract-dev", run.stderr)

    def test_another_group_is_refused(self):
        self.assertEqual(self.run_without_network("everything").returncode, 2)


if __name__ == "__main__":
    SOURCE = os.path.abspath(sys.argv.pop(1))
    unittest.main()
