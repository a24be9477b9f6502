"""Starting and ending the program."""
import os
import subprocess
import unittest

import program
from window import wait_for


class Start(unittest.TestCase):
    def test_the_window_opens_on_the_sign_in_form_and_closing_it_ends_the_program(self):
        with program.make_application() as application:
            window = application.window()
            self.assertEqual(window.find("frame").name, "Talvenor")
            field = window.find("text", "E-Mail")
            wait_for("the focus in the first field", lambda: field.focused)
            self.assertFalse(window.find("push button", "Sign In").enabled)
            self.assertEqual(application.close(), 0)
        self.assertNotIn("qrc:", program.printed())  # what QML has to say is always a mistake

    def test_start_makes_the_storage_folder_and_remembers_it(self):
        with program.make_application() as application:
            application.window().find("push button", "Sign In")
            self.assertTrue((program.storage() / "Recordings").is_dir())
            settings = (program.home() / ".config/talvenor/talvenor.conf").read_text(encoding="utf-8")
            self.assertIn(f"storageDirectory={program.storage()}", settings)
            application.close()

    def test_a_service_that_is_not_there_is_told_in_place_and_the_fields_stay(self):
        program.write_settings(appLanguage="en")
        with program.make_application() as application:
            window = application.window()
            program.sign_in(window)
            usual = {"Talvenor", "Sign in to continue", "E-Mail", "Password", "Don't have an account?", ""}
            wait_for("an error text", lambda: {label.name for label in window.find_all("label")} - usual)
            self.assertEqual(window.find("text", "E-Mail").text, program.EMAIL)
            self.assertEqual(window.find("password text").text, "•" * len(program.PASSWORD))
            self.assertEqual(window.find_all("dialog"), [])
            application.close()

    def test_without_a_display_the_program_says_so_and_fails(self):
        surroundings = {name: value for name, value in os.environ.items()
                        if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
        for added in ({}, {"DISPLAY": ":4711"}):
            with self.subTest(added):
                result = subprocess.run([program.BIN / "talvenor"], env={**surroundings, **added},
                                        capture_output=True, text=True, timeout=60, check=False)
                self.assertEqual(result.returncode, 1, result.stderr)
                self.assertIn("there is no display on which to open the window", result.stderr)

    def test_what_is_said_on_the_command_line_is_not_read(self):
        # Qt would take the second one for itself and fail for want of such a platform.
        for words in (["--no-such-option"], ["-platform", "nosuch"]):
            with self.subTest(words):
                result = subprocess.Popen([program.BIN / "talvenor", *words], stderr=subprocess.DEVNULL)
                try:
                    with self.assertRaises(subprocess.TimeoutExpired):
                        result.wait(2)  # it is still running, for a person to use
                finally:
                    result.terminate()
                    result.wait(20)

    def test_a_second_start_says_that_there_is_one_and_leaves_the_first_alone(self):
        program.write_settings(appLanguage="en")
        with program.make_application() as first:
            window = first.window()
            window.find("push button", "Sign In")
            with program.make_application() as second:
                message = second.window()
                message.find(name="Talvenor is already running.")
                message.find("push button", "OK").press()
                self.assertEqual(second.process.wait(30), 1)
            window.find("push button", "Sign In")
            self.assertEqual(first.close(), 0)


if __name__ == "__main__":
    program.main()
