"""Makes the pictures of the whole window for docs/screens: one run for each language, colour scheme and scale.

    tests/support/virtual-desktop --secrets --display 2400x1600 --accessibility -- \\
        /usr/bin/python3 tests/endtoend/pictures.py --bin build/release/bin --out docs/screens --scheme dark --language de
"""
import argparse
import os
import pathlib
import subprocess
import sys
import time

from gi.repository import Gio, GLib

import program
from window import key
from window_test import entry

TEXTS = {
    "en": {"record": "Record", "sign in": "Sign In", "sign up": "Sign Up", "account": "My Account"},
    "de": {"record": "Aufnehmen", "sign in": "Anmelden", "sign up": "Registrieren", "account": "Mein Konto"},
}
ENTRIES = [
    entry(18, "Weekly planning", segments=[(0, "Good morning, everybody.")], summary="## Summary\nAll agreed."),
    entry(17, "Interview with Ms Nowak", segments=[(3, "Tell us more about your last project.")]),
    entry(16, "Kundentermin Müller & Söhne", status="transcribing"),
    entry(15, "Design review", status="summarizing", segments=[(1, "The first draft is ready.")]),
    entry(14, "Budget 2027: what we spend, what we save, and what we leave for later"),
    entry(13, "Call from the train", status="failed"),
    entry(12, "Retrospective", segments=[(0, "What went well?")], summary="## Summary\nMost of it."),
]
PORTAL = """<node><interface name="org.freedesktop.portal.Settings"><method name="Read">
<arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method></interface></node>"""


def serve_scheme(scheme):
    """Is the desktop that prefers this colour scheme; runs until it is ended."""
    def answer(_connection, _sender, _path, _interface, _method, _parameters, invocation):
        preference = GLib.Variant("u", {"dark": 1, "light": 2}[scheme])
        invocation.return_value(GLib.Variant("(v)", (GLib.Variant("v", preference),)))
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    bus.register_object("/org/freedesktop/portal/desktop", Gio.DBusNodeInfo.new_for_xml(PORTAL).interfaces[0], answer)
    Gio.bus_own_name_on_connection(bus, "org.freedesktop.portal.Desktop", Gio.BusNameOwnerFlags.NONE, None, None)
    print("ready", flush=True)
    GLib.MainLoop().run()


def make_pictures(options):
    """Signs a free account in and takes a picture of each screen on the way."""
    texts = TEXTS[options.language]
    suffix = f"{options.scheme}-{options.language}" + ("" if options.scale == "1" else f"-{options.scale}x")
    program.write_settings(appLanguage=options.language, transcriptionLanguage="en-US", hasCompletedSetup="true")
    program.write_recordings(ENTRIES)
    os.environ["QT_SCALE_FACTOR"] = options.scale

    with program.make_service("free", "free@example.com") as service, \
            program.make_application(service.url) as application:
        def picture(name):
            time.sleep(1)  # motion has come to rest; nothing is asserted here
            target = options.out / f"{name}-{suffix}.png"
            subprocess.run(["import", "-window", application.window_id(), "-strip", str(target)], check=True)

        window = application.window()
        picture("window-sign-in")
        window.find("push button", texts["sign up"]).press()
        window.find("dialog")
        picture("window-sign-up")
        key("Escape")
        window.wait_gone("dialog")
        window.find("text", "E-Mail").set_text("free@example.com")
        window.find("password text").set_text(program.PASSWORD)
        window.find("push button", texts["sign in"]).press()
        window.find("push button", texts["record"])
        picture("window-ready")
        window.find("push button", texts["account"]).press()
        window.find("dialog")
        picture("window-account")
        key("Escape")
        window.wait_gone("dialog")
        window.find("list item", ENTRIES[0]["title"]).press()
        picture("window-recording")
        application.close()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--bin", type=pathlib.Path, required=True)
    parser.add_argument("--out", type=pathlib.Path, required=True)
    parser.add_argument("--scheme", choices=["light", "dark"], default="light")
    parser.add_argument("--language", choices=["en", "de"], default="en")
    parser.add_argument("--scale", default="1")
    parser.add_argument("--serve-scheme", action="store_true", help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.serve_scheme:
        serve_scheme(options.scheme)
    program.BIN = options.bin.resolve()
    options.out.mkdir(parents=True, exist_ok=True)
    portal = subprocess.Popen([sys.executable, __file__, *sys.argv[1:], "--serve-scheme"], stdout=subprocess.PIPE)
    try:
        portal.stdout.readline()
        make_pictures(options)
    finally:
        portal.terminate()
        portal.wait(20)


if __name__ == "__main__":
    main()
