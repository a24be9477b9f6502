"""The window with a list that an earlier run has left: keyboard, menus, tabs, edits, languages. No sound is needed."""
import datetime
import re
import unittest
import uuid

import program
from window import key, type_text, wait_for


def entry(number, title, status="completed", segments=(), summary=None, participants=()):
    date = datetime.datetime(2026, 3, 1, 9, 0, tzinfo=datetime.timezone.utc) + datetime.timedelta(days=number)
    made = {
        "id": str(uuid.UUID(int=number + 1)).upper(), "title": title, "date": date.strftime("%Y-%m-%dT%H:%M:%SZ"),
        "duration": 60 + number, "audioFileName": f"meeting_{number}.m4a", "status": status,
        "transcriptSegments": [{"id": str(uuid.uuid4()).upper(), "timestamp": time, "text": text}
                               for time, text in segments],
        "participants": [{"id": str(uuid.uuid4()).upper(), "name": name, "isDetectedByAI": detected}
                         for name, detected in participants],
    }
    if summary is not None:
        made["summary"] = summary
    return made


ENTRIES = [
    entry(4, "Budget 2027", segments=[(0, "Good morning."), (65, "We agree.")], summary="## Summary\nAll agreed.",
          participants=[("Susan", True), ("Robert", False)]),
    entry(3, "Interview", segments=[(3, "Tell me more.")]),
    entry(2, "Empty one"),
    entry(1, "Broken one", status="failed"),
]


class WindowWithAList(unittest.TestCase):
    def setUp(self):
        program.write_settings(appLanguage="en", transcriptionLanguage="en-US")
        program.write_recordings(ENTRIES)
        self.service = program.make_service(folder=f"service-{self.id()}")
        self.service.__enter__()
        self.addCleanup(self.service.__exit__)
        self.application = program.make_application(self.service.url)
        self.application.__enter__()
        self.addCleanup(self.application.__exit__, None)
        self.window = self.application.window()
        program.sign_in(self.window)
        self.window.find("push button", "Record")
        self.addCleanup(self.sign_out)

    def sign_out(self):
        """The secret store outlives the window, and the next test begins signed out."""
        if not self.window.find_all("password text"):
            program.sign_out(self.window)
        self.application.close()

    def titles(self):
        return [row.name for row in self.window.find_all("list item")]

    def menu_of(self, title):
        self.window.find("list item", title).click(button=3)
        menu = self.window.find("popup menu")
        wait_for("the entries", lambda: menu.find_all("menu item"))
        names = [item.name for item in menu.find_all("menu item")]
        key("Escape")
        self.window.wait_gone("popup menu")
        return names

    def test_rows_tell_date_duration_and_status(self):
        row = self.window.find("list item", "Budget 2027")
        self.assertRegex(row.description, r"^Mar 5, 2026, 9:00.AM, 01:04, Completed$")
        self.assertRegex(self.window.find("list item", "Broken one").description, "Failed$")

    def test_the_menu_offers_what_applies(self):
        self.assertEqual(self.menu_of("Budget 2027"), ["Export", "Delete"])
        self.assertEqual(self.menu_of("Interview"), ["Export", "Summarize", "Delete"])
        self.assertEqual(self.menu_of("Empty one"), ["Export", "Transcribe", "Delete"])
        self.assertEqual(self.menu_of("Broken one"), ["Export", "Delete"])

    def test_the_menu_opens_by_keyboard_and_deletes(self):
        self.window.find("list item", "Budget 2027").press().focus()
        for shortcut in ("Menu", "shift+F10"):
            key(shortcut)
            self.window.find("popup menu")
            key("Escape")
            self.window.wait_gone("popup menu")
        key("shift+F10")
        self.window.find("menu item", "Delete").press()
        self.window.wait_gone("list item", "Budget 2027")
        self.window.find("push button", "Record")  # the selection went with it
        wait_for("the change on the disk", lambda: len(program.recordings()) == 3)

    def test_the_search_filters_by_title_without_regard_to_case(self):
        field = self.window.find("text", "Search recordings...")
        field.set_text("ONE")
        wait_for("the filtered list", lambda: self.titles() == ["Empty one", "Broken one"])
        field.set_text(" ")
        wait_for("titles with spaces", lambda: self.titles() == ["Budget 2027", "Empty one", "Broken one"])
        field.set_text("morning")  # in a transcript only
        self.window.find("label", "No Results")
        self.window.find("push button", "Clear Search").press()
        wait_for("the whole list", lambda: len(self.titles()) == 4)

    def test_the_detail_shows_transcript_summary_and_people(self):
        self.window.find("list item", "Budget 2027").press()
        self.assertEqual(self.window.find("label", "We agree.").description, "01:05")
        self.window.find("page tab", "Summary").press()
        self.window.find("label", "## Summary\nAll agreed.")
        self.window.find("page tab", "Participants").press()
        self.window.find("label", "Susan")
        self.assertEqual(len(self.window.find_all("label", "Detected by AI")), 1)
        # Another recording keeps the tab; its buttons are its own.
        self.window.find("list item", "Interview").press()
        self.assertTrue(self.window.find("page tab", "Participants").selected)
        self.window.find("label", "No Participants")
        self.window.find("push button", "Summarize")
        self.assertEqual(self.window.find_all("push button", "Transcribe"), [])

    def test_people_are_added_renamed_and_removed(self):
        self.window.find("list item", "Budget 2027").press()
        self.window.find("page tab", "Participants").press()
        add = self.window.find("push button", "Add Participant")
        field = self.window.find("text", "Add participant...")
        field.set_text("   ")
        self.assertFalse(add.enabled)
        field.type("  Zoe ")
        key("Return")
        self.window.find("label", "Zoe")
        wait_for("an empty field", lambda: field.text == "")
        self.window.find("push button", "Edit Robert").press()
        edit = self.window.find("text", "Name")
        wait_for("the name to edit", lambda: edit.text == "Robert")
        edit.type("Bob")
        key("Return")
        self.window.find("label", "Bob")
        self.window.find("push button", "Remove Susan").press()
        self.window.wait_gone("label", "Susan")
        wait_for("the names on the disk", lambda: [p["name"] for p in program.recordings()[0]["participants"]]
                 == ["Bob", "Zoe"])

    def test_the_title_is_edited_by_double_click_and_by_keyboard(self):
        self.window.find("list item", "Interview").press()
        self.window.find("label", "Interview").click(repeat=2)
        self.window.find("text", "Title").type("Talk")
        key("Return")
        self.window.find("list item", "Talk")
        self.window.find("label", "Talk").focus()
        key("Return")
        self.window.find("text", "Title").type("Second talk")
        key("Return")
        self.window.find("label", "Second talk")
        wait_for("the title on the disk", lambda: program.recordings()[1]["title"] == "Second talk")

    def test_the_language_changes_at_once(self):
        self.window.find("list item", "Interview").press()
        self.window.find("push button", "Settings").press()
        sheet = self.window.find("dialog", "Settings")
        sheet.find("radio button", "Deutsch").press()
        # The sheet itself and all that lies beneath it.
        sheet = self.window.find("dialog", "Einstellungen")
        self.window.find("push button", "Zusammenfassen")
        self.window.find("label", "Abgeschlossen")
        self.assertRegex(self.window.find("list item", "Interview").description, "Abgeschlossen$")
        self.assertTrue(sheet.find("radio button", "Deutsch").checked)
        self.assertFalse(sheet.find("radio button", "English").checked)
        key("Escape")
        self.window.wait_gone("dialog")
        self.window.find("push button", "Neue Aufnahme").press()
        self.window.find("push button", "Aufnehmen")
        self.window.find("label", "Bereit zur Aufnahme")
        program.choose_language(self.window, "English")
        self.window.find("push button", "Record")

    def test_the_keyboard_reaches_every_control_in_reading_order(self):
        self.window.find("text", "Search recordings...").focus()
        order = []
        for _ in range(5):
            key("Tab")
            order.append(wait_for("a focus", lambda: next(
                (e.name for e in self.window.walk() if e.focused and e.role not in ("frame", "list")), None)))
        self.assertEqual(order, ["Budget 2027", "Plans", "My Account", "Settings", "Record"])
        key("shift+Tab", "shift+Tab", "shift+Tab", "shift+Tab", "Down", "Return")
        self.window.find("label", "Interview")

    def test_signing_out_shows_the_form_and_signing_in_the_same_list(self):
        self.window.find("list item", "Interview").press()
        program.sign_out(self.window)
        program.sign_in(self.window)
        self.window.find("label", "Interview")  # still selected
        self.assertEqual(len(self.titles()), 4)
        self.assertEqual(self.window.find_all("dialog"), [])  # the account sheet went with the session

    def test_another_account_finds_the_same_list(self):
        program.add_account(f"service-{self.id()}", "bob@example.com", "Bob", "free")
        program.sign_out(self.window)
        program.sign_in(self.window, "bob@example.com")
        self.window.find("push button", "My Account", description="Free")
        self.assertEqual(len(self.titles()), 4)

    def test_the_tool_bar_opens_its_sheets_and_escape_closes_them(self):
        self.window.find("push button", "My Account", description="Premium")
        self.assertEqual(self.window.find_all("push button", "Admin Panel"), [])
        for button, title in (("Plans", "Choose Plan"), ("My Account", "My Account"), ("Settings", "Settings")):
            with self.subTest(button):
                opener = self.window.find("push button", button).focus()
                key("Return")
                self.window.find("dialog", title).find("push button", "Close")
                key("Escape")
                self.window.wait_gone("dialog")
                wait_for("the focus back on the button", lambda: opener.focused)


class SignUp(unittest.TestCase):
    def test_an_account_is_made_in_a_sheet_that_begins_empty_each_time(self):
        program.write_settings(appLanguage="en")
        with program.make_service(folder="service-sign-up") as service, \
                program.make_application(service.url) as application:
            window = application.window()
            window.find("push button", "Sign Up").press()
            sheet = window.find("dialog", "Create Account")
            sheet.find("text", "Name").set_text("Max")
            key("Escape")
            window.wait_gone("dialog")
            window.find("push button", "Sign Up").press()
            sheet = window.find("dialog", "Create Account")
            self.assertEqual(sheet.find("text", "Name").text, "")
            self.assertTrue(sheet.find("text", "Name").focused)
            submit = sheet.find("push button", "Sign Up")
            sheet.find("text", "Name").type("Max")
            key("Tab")
            type_text("max@example.com")
            key("Tab")
            type_text("12345")
            key("Tab")
            type_text("12345")
            self.assertFalse(submit.enabled)
            type_text("6")
            key("shift+Tab", "End")
            type_text("6")
            wait_for("a valid form", lambda: submit.enabled)
            self.assertEqual(sheet.find("password text", "Password").text, "••••••")
            submit.press()
            window.find("push button", "Record")
            self.assertEqual(window.find_all("dialog"), [])
            program.sign_out(window)
            self.assertEqual(application.close(), 0)
        self.assertNotIn("qrc:", program.printed())


class FirstSignIn(unittest.TestCase):
    def test_the_set_up_comes_once_after_the_first_sign_in_on_a_machine(self):
        program.write_settings(appLanguage="en", hasCompletedSetup="false")
        with program.make_service(folder="service-first") as service, \
                program.make_application(service.url) as application:
            window = application.window()
            window.find("push button", "Sign In")
            self.assertEqual(window.find_all("dialog"), [])
            program.sign_in(window)
            sheet = window.find("dialog", "Welcome to Talvenor")
            wait_for("the focus in the sheet", lambda: sheet.find("push button", "Let's Go").focused)
            self.assertNotIn("hasCompletedSetup=true", program.settings())
            key("Escape")  # any way of closing it counts
            window.wait_gone("dialog")
            wait_for("the setting", lambda: "hasCompletedSetup=true" in program.settings())
            program.sign_out(window)
            program.sign_in(window)
            window.find("push button", "Record")
            self.assertEqual(window.find_all("dialog"), [])
            program.sign_out(window)
            self.assertEqual(application.close(), 0)
        self.assertNotIn("qrc:", program.printed())

    def test_the_sign_in_form_can_be_small_and_the_main_window_takes_its_room(self):
        program.write_settings(appLanguage="en")
        with program.make_service(folder="service-small") as service, \
                program.make_application(service.url) as application:
            window = application.window()
            window.find("push button", "Sign In")
            self.assertEqual(application.window_size(), (1100, 720))
            application.resize_window(300, 300)
            wait_for("the smallest form", lambda: application.window_size() == (500, 600))
            program.sign_in(window)
            window.find("push button", "Record")
            wait_for("room for the main window", lambda: application.window_size() == (960, 640))
            application.resize_window(300, 300)
            self.assertEqual(application.window_size(), (960, 640))
            program.sign_out(window)
            self.assertEqual(application.close(), 0)


if __name__ == "__main__":
    program.main()
