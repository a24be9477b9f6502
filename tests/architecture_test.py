#!/usr/bin/python3
"""Checks that includes point one way only, from each folder of src/ to those below it.

The build proves it for includes by name; this also finds what would go round it by a relative path, and Qt Quick
below the screens.

    architecture_test.py SOURCE_FOLDER
"""
import pathlib
import re
import sys

BELOW = {
    "foundation": [],
    "platform": ["foundation"],
    "app/settings": ["foundation", "platform"],
    "store": ["foundation", "platform", "settings"],
    "audio": ["foundation", "platform", "settings"],
    "service": ["foundation", "platform", "settings"],
    "speech": ["foundation", "platform", "settings", "store", "service"],
    "recorder": ["foundation", "platform", "settings", "store", "audio", "service", "speech"],
    "screens": ["foundation", "platform", "settings", "store", "audio", "service", "speech", "recorder"],
    "app": ["foundation", "platform", "settings", "store", "audio", "service", "speech", "recorder", "screens"],
}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
FOLDERS = {name.split("/")[-1] for name in BELOW}


def offences(source):
    for path in sorted(source.rglob("*")):
        if path.suffix not in (".cpp", ".h"):
            continue
        relative = path.relative_to(source).as_posix()
        folder = max((name for name in BELOW if relative.startswith(name + "/")), key=len)
        own = folder.split("/")[-1]
        for found in INCLUDE.finditer(path.read_text(encoding="utf-8")):
            kind, header = found.groups()
            first = header.split("/")[0]
            if ".." in header.split("/"):
                yield f"{relative}: includes by a relative path: {header}"
            elif kind == '"' and "/" in header and first in FOLDERS and first != own and first not in BELOW[folder]:
                yield f"{relative}: {folder} must not know {first}: {header}"
            elif kind == "<" and first.startswith(("QtQuick", "QQuick")) and folder not in ("screens", "app"):
                yield f"{relative}: Qt Quick below the screens: {header}"
            elif kind == '"' and header.startswith("platform/linux/") and not relative.startswith(
                    ("platform/linux/", "app/")):
                yield f"{relative}: only the entry puts the Linux platform together: {header}"


def main():
    source = pathlib.Path(sys.argv[1])
    folders = {path.name for path in source.iterdir() if path.is_dir()}
    unknown = folders - {name.split("/")[0] for name in BELOW}
    if unknown or not folders:
        sys.exit(f"folders without a place in the order: {unknown}")
    found = list(offences(source))
    for offence in found:
        print(offence)
    print(f"{0 if found else 1} passed, {1 if found else 0} failed")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
