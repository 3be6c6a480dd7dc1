#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""When ./run builds and when it installs.

usage: run_script.py SOURCE_FOLDER      (in a sandbox)

The project is a small one of the same form, for the real one takes minutes to build. "sudo", which
no sandbox has, notes that it was asked and does as it is told.
"""
import os
import shutil
import subprocess
import sys
import unittest

SOURCE = sys.argv.pop(1)
PROJECT = "/tmp/project"
SYSTEM = "/tmp/system"
NOTES = "/tmp/sudo-was-asked"
FILES = {
    "CMakePresets.json": """{"version": 6, "configurePresets": [{"name": "release",
        "generator": "Ninja", "binaryDir": "${sourceDir}/build/release"}],
        "buildPresets": [{"name": "release", "configurePreset": "release"}]}""",
    "CMakeLists.txt": f"""
        cmake_minimum_required(VERSION 3.25)
        project(Small LANGUAGES NONE)
        function(program source target)
          add_custom_command(OUTPUT "${{target}}"
            COMMAND "${{CMAKE_COMMAND}}" -E copy "${{CMAKE_SOURCE_DIR}}/${{source}}" "${{target}}"
            DEPENDS "${{source}}" VERBATIM)
          string(MAKE_C_IDENTIFIER "${{source}}" name)
          add_custom_target(${{name}} ALL DEPENDS "${{target}}")
        endfunction()
        program(ostrel-settings "${{CMAKE_BINARY_DIR}}/bin/ostrel-settings")
        program(Commands/tool "${{CMAKE_BINARY_DIR}}/libexec/ostrel/tool")
        install(PROGRAMS "${{CMAKE_BINARY_DIR}}/libexec/ostrel/tool" DESTINATION {SYSTEM}/libexec
                COMPONENT system)
        install(FILES policy DESTINATION {SYSTEM}/actions COMPONENT system)
        file(CREATE_LINK {SYSTEM}/libexec/tool "${{CMAKE_BINARY_DIR}}/generator" SYMBOLIC)
        install(FILES "${{CMAKE_BINARY_DIR}}/generator" DESTINATION {SYSTEM}/generators COMPONENT system)
        install(FILES policy DESTINATION {SYSTEM}/elsewhere)
    """,
    "ostrel-settings": "#!/bin/sh\necho opened \"$@\"\n",
    "Commands/tool": "#!/bin/sh\necho one\n",
    "policy": "a policy\n",
    "Packaging/install-dependencies": "#!/bin/sh\n",
    "/tmp/bin/sudo": f'#!/bin/sh\necho "$@" >>{NOTES}\nexec "$@"\n',
}


class RunScript(unittest.TestCase):
    def setUp(self):
        for folder in PROJECT, SYSTEM, "/tmp/bin":
            shutil.rmtree(folder, ignore_errors=True)
        for name, text in FILES.items():
            self.write(os.path.join(PROJECT, name), text)
        shutil.copy(f"{SOURCE}/run", PROJECT)
        self.run_it()
        self.expect_installed()

    def write(self, path, text):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, 0o755)

    def run_it(self, *arguments):
        """Opens the pane as on a desktop, which is to succeed, and answers with what was written."""
        if os.path.exists(NOTES):
            os.unlink(NOTES)
        environment = dict(os.environ, DISPLAY=":0", DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere",
                           PATH=f"/tmp/bin:{os.environ['PATH']}")
        result = subprocess.run([f"{PROJECT}/run", *arguments], env=environment, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.assertEqual(result.returncode, 0, result.stdout)
        if "--build" not in arguments:
            self.assertTrue(result.stdout.endswith(" ".join(["opened", *arguments]) + "\n"),
                            result.stdout)
        return result.stdout

    def expect_installed(self, installed=True):
        """Whether sudo was asked, once, and what is there in the end."""
        self.assertEqual(os.path.exists(NOTES), installed)
        if installed:
            with open(NOTES, encoding="utf-8") as file:
                self.assertEqual(file.read(), "env CMAKE_INSTALL_ALWAYS=1 cmake --install build/release "
                                              "--component system\n")
        self.assertEqual(sorted(os.listdir(SYSTEM)), ["actions", "generators", "libexec"])
        for name, path in ("Commands/tool", "libexec/tool"), ("policy", "actions/policy"):
            with open(f"{PROJECT}/{name}") as built, open(f"{SYSTEM}/{path}") as there:
                self.assertEqual(there.read(), built.read())
        self.assertEqual(os.readlink(f"{SYSTEM}/generators/generator"), f"{SYSTEM}/libexec/tool")

    def test_nothing_is_built_or_installed_where_nothing_has_changed(self):
        self.assertIn("no work to do", self.run_it())
        self.expect_installed(False)

    def test_a_change_in_a_command_is_built_and_installed(self):
        self.write(f"{PROJECT}/Commands/tool", "#!/bin/sh\necho two\n")
        self.run_it()
        self.expect_installed()

    def test_a_change_in_the_policy_is_installed(self):
        self.write(f"{PROJECT}/policy", "another policy\n")
        self.run_it()
        self.expect_installed()

    def test_what_is_missing_or_another_in_the_system_is_installed_again(self):
        def link_elsewhere():
            os.unlink(f"{SYSTEM}/generators/generator")
            os.symlink("/nowhere", f"{SYSTEM}/generators/generator")

        for spoil in (lambda: os.unlink(f"{SYSTEM}/libexec/tool"),
                      lambda: os.chmod(f"{SYSTEM}/libexec/tool", 0o700),
                      lambda: self.write(f"{SYSTEM}/actions/policy", "an old policy\n"),
                      lambda: os.unlink(f"{SYSTEM}/generators/generator"), link_elsewhere):
            spoil()
            self.run_it()
            self.expect_installed()

    def test_an_installations_list_that_is_roots_is_no_hindrance(self):
        os.chmod(f"{PROJECT}/build/release/install_manifest_system.txt", 0o400)
        self.run_it()
        self.expect_installed(False)

    def test_to_build_only_installs_nothing(self):
        self.write(f"{PROJECT}/Commands/tool", "#!/bin/sh\necho two\n")
        self.assertNotIn("opened", self.run_it("--build"))
        self.assertFalse(os.path.exists(NOTES))
        with open(f"{PROJECT}/build/release/libexec/ostrel/tool", encoding="utf-8") as file:
            self.assertIn("two", file.read())

    def test_options_are_passed_on(self):
        self.run_it("--page", "network")

    def test_help_names_the_ways_to_run_it(self):
        help_text = subprocess.run(
            [f"{PROJECT}/run", "--help"], text=True, capture_output=True, check=True).stdout
        for word in "--build", "--scene", "--help":
            self.assertIn(word, help_text)


unittest.main(verbosity=2)
