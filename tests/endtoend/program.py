"""What the tests of the whole program share: its folder of programs, its settings and a service to sign in to."""
import argparse
import json
import os
import pathlib
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


def write_settings(**values):
    """The settings file as an earlier run would have left it."""
    folder = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "talvenor"
    folder.mkdir(parents=True, exist_ok=True)
    lines = "".join(f"{key}={value}\n" for key, value in values.items())
    (folder / "talvenor.conf").write_text("[General]\n" + lines, encoding="utf-8")


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
    data = desktop() / folder
    service_process.create_account(BIN, data, email, "Ann", tier, PASSWORD)
    return service_process.Service(BIN, data)


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


def new_entry():
    """The newest recording on the disk, once there is one."""
    return wait_for("an entry in recordings.json", recordings)[0]
