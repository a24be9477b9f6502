"""What the tests of the whole program share: its folder of programs, its settings and a service to sign in to."""
import argparse
import json
import os
import pathlib
import re
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent.parent / "scripts"))
sys.path.insert(0, str(HERE.parent / "support"))
import service_process  # noqa: E402
from window import Application, wait_for  # noqa: E402

BIN = None  # set by `main`
EMAIL = "ann@example.com"
PASSWORD = "correct horse"


def main():
    """Runs the tests of the calling script on the programs that --bin names."""
    global BIN
    parser = argparse.ArgumentParser()
    parser.add_argument("--bin", required=True, type=pathlib.Path)
    options, rest = parser.parse_known_args()
    sys.modules["program"].BIN = options.bin
    unittest.main(module="__main__", argv=[sys.argv[0], *rest], warnings="ignore")


def home():
    return pathlib.Path(os.environ["HOME"])


def desktop():
    return pathlib.Path(os.environ["TALVENOR_DESKTOP"])


def storage():
    """The folder of recordings that the program chooses by itself."""
    return home() / "Documents/Talvenor"


def settings_path():
    return pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "talvenor/talvenor.conf"


def settings():
    """The settings file as it is on the disk."""
    return settings_path().read_text(encoding="utf-8")


def write_settings(**values):
    """The settings file as an earlier run would have left it, with the set-up behind it unless told otherwise."""
    values = {"hasCompletedSetup": "true", **values}
    settings_path().parent.mkdir(parents=True, exist_ok=True)
    lines = "".join(f"{key}={value}\n" for key, value in values.items())
    settings_path().write_text("[General]\n" + lines, encoding="utf-8")


def recordings():
    """recordings.json as it is on the disk; empty while there is none."""
    try:
        return json.loads((storage() / "recordings.json").read_text(encoding="utf-8"))
    except FileNotFoundError:
        return []


def write_recordings(entries):
    storage().mkdir(parents=True, exist_ok=True)
    (storage() / "recordings.json").write_text(json.dumps(entries), encoding="utf-8")


def make_service(tier="premium", email=EMAIL, folder="service"):
    """A service with one account; use it in a `with`."""
    add_account(folder, email, "Ann", tier)
    return service_process.Service(BIN, desktop() / folder)


def add_account(folder, email, name, tier):
    """One more account for the service of that folder, which may run."""
    service_process.create_account(BIN, desktop() / folder, email, name, tier, PASSWORD)


def make_application(url="http://127.0.0.1:9/api", **environment):
    """The program, talking to `url`; by default to a port on which nobody listens."""
    return Application(BIN / "talvenor", {"TALVENOR_API_URL": url, **environment}, desktop() / "talvenor.log")


def printed():
    """What the program has printed so far."""
    return (desktop() / "talvenor.log").read_text(encoding="utf-8", errors="replace")


def sign_in(window, email=EMAIL, password=PASSWORD):
    window.find("text", "E-Mail").set_text(email)
    window.find("password text", "Password").set_text(password)
    window.find("push button", "Sign In").press()


def sign_out(window):
    """By the account sheet, in either language."""
    window.find("push button", re.compile("^(My Account|Mein Konto)$")).press()
    sheet = window.find("dialog", re.compile("^(My Account|Mein Konto)$"))
    sheet.find("push button", re.compile("^(Sign Out|Abmelden)$")).press()
    window.find("password text")
    window.wait_gone("dialog")


def choose_language(window, name):
    """By the settings sheet, which is closed again."""
    window.find("push button", re.compile("^(Settings|Einstellungen)$")).press()
    sheet = window.find("dialog")
    chosen = sheet.find("radio button", name).press()
    wait_for(f"{name} chosen", lambda: chosen.checked)
    sheet.find("push button", re.compile("^(Close|Schließen)$")).press()
    window.wait_gone("dialog")


def new_entry():
    """The newest recording on the disk, once there is one."""
    return wait_for("an entry in recordings.json", recordings)[0]
