#!/usr/bin/python3
"""Speaks the interface of whisper.cpp's command-line program, for tests: the same options, the same files, the
same ways to fail. What it does is written in the file "mode" beside it; what it was asked goes to "asked.json".
"""
import json
import os
import pathlib
import signal
import stat
import struct
import sys
import time
import wave

HERE = pathlib.Path(sys.argv[0]).resolve().parent
OPTIONS = {"-m": 1, "-f": 1, "-l": 1, "-t": 1, "-oj": 0, "-ml": 1, "-sow": 0, "-pp": 0, "-of": 1}
WORDS = [(" Guten", 120), (" Morgen,", 480), (" schöne", 900), (" Grüße.", 1310), (" Los", 1900)]


def help_text(mode):
    lines = ["usage: whisper-cli [options] file0 file1 ..."]
    for option, count in OPTIONS.items():
        if (mode, option) in (("without -oj", "-oj"), ("without -sow", "-sow")):
            continue
        lines.append(f"  {option + ',':8}--long-name {'N' if count else ''}   [default] text about something")
    return "\n".join(lines) + "\n"


def parse(arguments):
    """The options as the real program reads them: an unknown one ends it, with success."""
    given = {}
    rest = list(arguments)
    while rest:
        option = rest.pop(0)
        if option not in OPTIONS:
            sys.stderr.write(f"error: unknown argument: {option}\n")
            sys.exit(0)
        given[option] = rest.pop(0) if OPTIONS[option] else True
    return given


def load_model(path):
    with open(path, "rb") as file:
        head = file.read(8)
    if len(head) < 8 or struct.unpack("<I", head[:4])[0] != 0x67676D6C:
        sys.stderr.write("error: failed to initialize whisper context\n")
        sys.exit(3)


def read_audio(path):
    try:
        with wave.open(path) as audio:
            shape = (audio.getnchannels(), audio.getsampwidth(), audio.getframerate())
            return shape, audio.getnframes() / audio.getframerate()
    except (OSError, EOFError, wave.Error):
        sys.stderr.write(f"error: failed to read audio file '{path}'\n")
        sys.exit(0)


def clock(milliseconds):
    seconds, rest = divmod(milliseconds, 1000)
    return f"{seconds // 3600:02}:{seconds // 60 % 60:02}:{seconds % 60:02}.{rest:03}"


def say(text, start):
    print(f"[{clock(start)} --> {clock(start + 300)}]  {text}", flush=True)


def entry(text, start):
    return {"timestamps": {"from": clock(start), "to": clock(start + 300)},
            "offsets": {"from": start, "to": start + 300}, "text": text}


def transcription(mode):
    if mode == "silent":
        return [(" [BLANK_AUDIO]", 0)]
    if mode == "silence in words":
        return [(" (soft", 0), (" silence)", 500)]
    if mode == "nothing":
        return []
    if mode == "marks between":
        return [(" Hallo", 100), (" [", 400), (" Musik", 500), (" spielt]", 600), (" Welt", 900), ("", 950),
                (" ", 960), (" (leise)", 1000)]
    if mode == "falling starts":
        return [(" eins", 1000), (" zwei", 400), (" drei", 2000), (" vier", -5)]
    return WORDS


def main():
    mode = (HERE / "mode").read_text().strip()
    if sys.argv[1:] == ["--help"]:
        if mode == "help hangs":
            time.sleep(600)
        sys.stderr.write(help_text(mode))
        sys.exit(0 if mode != "help fails" else 1)

    given = parse(sys.argv[1:])
    load_model(given["-m"])
    shape, length = read_audio(given["-f"])
    audio = os.stat(given["-f"])
    folder = os.stat(pathlib.Path(given["-f"]).parent)
    (HERE / "asked.json").write_text(json.dumps({
        "arguments": sys.argv[1:], "channels": shape[0], "bytes": shape[1], "rate": shape[2], "length": length,
        "audioMode": stat.S_IMODE(audio.st_mode), "folderMode": stat.S_IMODE(folder.st_mode)}))

    print("\nmain: processing, some line that is no result\n", flush=True)
    sys.stderr.write("whisper_print_progress_callback: progress = 128%\n")
    words = transcription(mode)
    for text, start in words[:2]:
        say(text, max(0, start))
    if mode == "hangs":
        time.sleep(600)
    if mode == "exit 1":
        sys.exit(1)
    if mode == "crash":
        os.kill(os.getpid(), signal.SIGSEGV)
    for text, start in words[2:]:
        say(text, max(0, start))
    if mode == "no result":
        sys.exit(0)

    document = {"systeminfo": "none", "params": {"language": given["-l"]},
                "transcription": [entry(text, start) for text, start in words]}
    content = json.dumps(document, ensure_ascii=False, indent="\t").encode()
    if mode == "invalid text":
        content = content.replace("schöne".encode(), b"sch\xc3ne")
    elif mode == "torn result":
        content = content[:len(content) // 2]
    elif mode == "other result":
        content = b'{"transcription": "none"}'
    pathlib.Path(given["-of"] + ".json").write_bytes(content)


main()
