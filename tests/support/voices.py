"""Voices of a meeting on the virtual desktop: the near side in the room, the far side out of the speaker."""
import pathlib
import subprocess
import tempfile

# What is played into the room reaches the microphone through the air, so to speak. For the audio server it is
# an application like any other; marked as part of a loopback it is left out of the computer's own sound, and is
# heard once and not twice.
_SIDES = {
    "near": ["--device=room", "--property=node.link-group=room"],
    "far": ["--device=speaker"],
}


def speak(side, voice, text):
    """Says a sentence in a flite voice on the side "near" or "far"; returns when it has been said."""
    with tempfile.TemporaryDirectory() as folder:
        spoken = pathlib.Path(folder) / "sentence.wav"
        subprocess.run(["flite", "-voice", voice, "-t", text, "-o", spoken], check=True)
        subprocess.run(["paplay", *_SIDES[side], spoken], check=True)
