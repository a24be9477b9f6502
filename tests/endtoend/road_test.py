"""The whole road of one meeting on real sound: recorded, transcribed, summarised, exported; and what is refused."""
import json
import re
import subprocess
import unittest
import urllib.request

import program
from voices import speak
from window import key, wait_for

MEETING = [
    ("near", "awb", "Good morning. My name is Susan. The first question is the price of the new house."),
    ("far", "rms", "Good morning Susan. We have decided to take the house near the river."),
    ("near", "awb", "Good. I will write to the owner of the house by Friday."),
]


class Road(unittest.TestCase):
    def test_a_meeting_from_sign_in_to_export(self):
        program.write_settings(appLanguage="en", transcriptionLanguage="en-US")
        with program.make_service() as service, program.make_application(service.url) as application:
            window = application.window()
            self.a_wrong_password_is_told_with_the_session_text(window)
            program.sign_in(window)
            window.find("push button", "Record").press()
            self.the_running_recording_is_on_the_disk(window)
            for side, voice, text in MEETING:
                speak(side, voice, text)
            self.the_wide_button_shows_the_timer(window)
            window.find("push button", "Stop Recording").press()
            entry = self.transcript_and_summary_arrive()
            self.the_screen_shows_what_the_file_holds(window, entry)
            self.title_and_people_can_be_changed(window)
            self.the_language_changes(window)
            self.the_export_is_written(window)
            program.sign_out(window)
            self.assertEqual(application.close(), 0)
        self.assertNotIn("qrc:", program.printed())
        sound = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "stream=codec_name", "-of", "csv=p=0",
                                program.storage() / "Recordings" / entry["audioFileName"]],
                               check=True, capture_output=True, text=True)
        self.assertEqual(sound.stdout.strip(), "aac")

    def a_wrong_password_is_told_with_the_session_text(self, window):
        program.sign_in(window, password="wrong")
        window.find("label", "Session expired. Please log in again.")
        self.assertEqual(window.find("text", "E-Mail").text, program.EMAIL)

    def the_running_recording_is_on_the_disk(self, window):
        window.find("push button", "Stop Recording")
        self.assertEqual(program.new_entry()["status"], "recording")
        self.assertRegex(window.find("list item").description, "Recording$")
        window.find("label", "Recording")

    def the_wide_button_shows_the_timer(self, window):
        self.assertRegex(window.find("push button", "Stop Recording").find("label").name, r"^\d\d:\d\d$")

    def transcript_and_summary_arrive(self):
        def finished():
            entry = program.new_entry()
            self.assertNotEqual(entry["status"], "failed")
            return entry if entry.get("summary") and entry["status"] == "completed" else None
        entry = wait_for("transcript and summary", finished, seconds=240)
        said = " ".join(segment["text"] for segment in entry["transcriptSegments"]).lower()
        # Both sides were heard: one word each that only that side says.
        self.assertIn("friday", said)
        self.assertIn("decided", said)
        self.assertGreater(entry["duration"], 8)
        return entry

    def the_screen_shows_what_the_file_holds(self, window, entry):
        window.find("list item", description=re.compile("Completed$"))
        first = entry["transcriptSegments"][0]
        window.find("label", first["text"])
        window.find("page tab", "Summary").press()
        window.find("label", entry["summary"])

    def title_and_people_can_be_changed(self, window):
        window.find("label", re.compile("^Meeting ")).focus()
        key("Return")
        window.find("text", "Title").type("The new house")
        key("Return")
        window.find("list item", "The new house")
        window.find("page tab", "Participants").press()
        window.find("text", "Add participant...").type("Susan Miller")
        key("Return")
        window.find("push button", "Remove Susan Miller")
        wait_for("the changes on the disk",
                 lambda: program.new_entry()["title"] == "The new house"
                 and "Susan Miller" in [person["name"] for person in program.new_entry()["participants"]])

    def the_language_changes(self, window):
        program.choose_language(window, "Deutsch")
        window.find("page tab", "Teilnehmer")
        program.choose_language(window, "English")
        window.find("page tab", "Participants")

    def the_export_is_written(self, window):
        target = program.home() / "Documents/exported.md"
        window.find("push button", "Export").press()
        dialog = window.find("dialog")
        name = dialog.find("text")
        self.assertTrue(name.text.endswith("The new house.md"), name.text)
        name.set_text(str(target))
        dialog.find("push button", "Save").press()
        wait_for("the exported file", target.exists)
        window.wait_gone("dialog")
        text = wait_for("its text", lambda: target.read_text(encoding="utf-8"))
        self.assertIn("The new house", text)
        self.assertIn("Susan Miller", text)


class Quitting(unittest.TestCase):
    def test_closing_the_window_while_recording_keeps_the_sound_and_leaves_the_entry_as_it_stands(self):
        program.write_settings(appLanguage="en", autoTranscribe="false")
        with program.make_service(folder="service-quitting") as service:
            with program.make_application(service.url) as application:
                window = application.window()
                program.sign_in(window)
                window.find("push button", "Record").press()
                window.find("push button", "Stop Recording")
                speak("near", "awb", "This sentence is spoken before the window is closed.")
                entry = program.new_entry()
                self.assertEqual(application.close(), 0)
            self.assertEqual(program.new_entry()["status"], "recording")
            length = subprocess.run(
                ["ffprobe", "-v", "error", "-show_entries", "format=duration", "-of", "csv=p=0",
                 program.storage() / "Recordings" / entry["audioFileName"]], check=True, capture_output=True, text=True)
            self.assertGreater(float(length.stdout), 2)
            with program.make_application(service.url) as application:
                application.window().find("list item", description=re.compile("Recording$"))
                self.assertEqual(application.close(), 0)


class Limits(unittest.TestCase):
    def test_a_free_account_beyond_its_limit_is_refused_with_an_alert(self):
        program.write_settings(appLanguage="en", autoTranscribe="false")
        email = "free@example.com"
        with program.make_service("free", email, "service-free") as service, \
                program.make_application(service.url) as application:
            window = application.window()
            program.sign_in(window, email)
            before = len(program.recordings())
            for number in range(1, 4):
                window.find("push button", "Record").press()
                window.find("push button", "Stop Recording")
                if number == 2:
                    self.the_record_screen_shows_the_running_session(window)
                    window.find("push button", "Stop").press()
                else:
                    window.find("push button", "Stop Recording").press()
                wait_for("the count at the service", lambda: self.count_at(service.url, email) == number)
                window.find("push button", "New Recording").press()
            # A profile fetched after the third is certainly there once one has signed in anew.
            program.sign_out(window)
            program.sign_in(window, email)
            window.find("push button", "Record").press()
            alert = window.find("dialog", "Error")
            alert.find("label", "Recording limit reached. Please upgrade your plan.")
            key("Escape")
            window.wait_gone("dialog")
            # The screen and the list are as they were.
            window.find("push button", "Record")
            self.assertEqual(len(program.recordings()), before + 2)  # one of the three was deleted
            program.sign_out(window)
            self.assertEqual(application.close(), 0)

    def the_record_screen_shows_the_running_session(self, window):
        """It comes up during a session when the selected recording is deleted."""
        window.find("list item", description=re.compile("Completed$|Failed$")).press()
        window.find("list item", description=re.compile("Completed$|Failed$")).click(button=3)
        window.find("menu item", "Delete").press()
        window.find("label", "Recording in Progress")
        window.find("label", "Microphone + System Audio")
        level = window.find("progress bar", "Input Level")
        self.assertTrue(level.has_state("showing"))
        self.assertTrue(any(re.fullmatch(r"\d\d:\d\d", label.name) for label in window.find_all("label")))

    def count_at(self, url, email):
        """What the service itself says of the account."""
        body = json.dumps({"email": email, "password": program.PASSWORD}).encode()
        request = urllib.request.Request(url + "/auth/login", body, {"Content-Type": "application/json"})
        with urllib.request.urlopen(request, timeout=20) as answer:
            return json.load(answer)["user"]["recordings_count"]


if __name__ == "__main__":
    program.main()
