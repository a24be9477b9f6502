"""The audio server of a virtual desktop: PulseAudio, or PipeWire with its PulseAudio front.

State lives in files below $TALVENOR_DESKTOP/audio, so that any process in the desktop can stop and start the
server: `kind` names it and `pids` lists its processes.
"""
import os
import pathlib
import signal
import subprocess
import time

SERVERS = ("pulseaudio", "pipewire")


def _folder(environment):
    return pathlib.Path(environment["TALVENOR_DESKTOP"]) / "audio"


def _spawn(environment, *command):
    log = open(_folder(environment) / f"{pathlib.Path(command[0]).name}.log", "ab")
    child = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                             start_new_session=True)
    with open(_folder(environment) / "pids", "a", encoding="ascii") as pids:
        pids.write(f"{child.pid}\n")
    return child


def _pactl(environment, *arguments):
    return subprocess.run(["pactl", *arguments], env=environment, capture_output=True, text=True, timeout=20,
                          check=False)


def _wait(what, condition, folder, seconds=30):
    limit = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > limit:
            logs = "".join(f"--- {log.name}\n{log.read_text(errors='replace')[-2000:]}"
                           for log in folder.glob("*.log"))
            raise SystemExit(f"virtual-desktop: {what} did not come up\n{logs}")
        time.sleep(0.02)


def start(kind, environment, microphone=True):
    """Starts a server with the virtual devices; answers with what it adds to the environment."""
    folder = _folder(environment)
    folder.mkdir(exist_ok=True)
    (folder / "kind").write_text(kind, encoding="ascii")
    (folder / "pids").write_text("", encoding="ascii")
    runtime = environment["XDG_RUNTIME_DIR"]
    socket = f"{runtime}/pulse-{kind}" if kind == "pulseaudio" else f"{runtime}/pulse/native"
    added = {"PULSE_SERVER": f"unix:{socket}", "PULSE_COOKIE": f"{runtime}/pulse-cookie"}
    environment = {**environment, **added}
    if kind == "pulseaudio":
        _spawn(environment, "pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
               "--disallow-exit=yes", "--realtime=no", "--high-priority=no", "--log-target=stderr",
               f"--load=module-native-protocol-unix socket={socket} auth-anonymous=1")
    else:
        _spawn(environment, "pipewire")
        _wait("PipeWire", (pathlib.Path(runtime) / "pipewire-0").exists, folder)
        _spawn(environment, "wireplumber")
        _spawn(environment, "pipewire-pulse")
    _wait("the audio server", lambda: _pactl(environment, "info").returncode == 0, folder)
    load_devices(environment, microphone)
    return added


def load_devices(environment, microphone=True):
    """The sinks and, unless told otherwise, the microphone; waits until all are there."""
    folder = _folder(environment)
    for sink in ("speaker", "room"):
        _load(environment, "module-null-sink", f"sink_name={sink}", "rate=48000", "channels=2")
        _wait(f"the sink {sink}", lambda sink=sink: _listed(environment, "sinks", sink), folder)
    _pactl(environment, "set-default-sink", "speaker")
    if microphone:
        plug_microphone(environment)


def plug_microphone(environment, name="microphone", rate=48000):
    """Adds a source that hears the room and makes it the default."""
    if (_folder(environment) / "kind").read_text(encoding="ascii") == "pipewire" and rate != 48000:
        # PipeWire's module-remap-source has the graph's rate whatever it is told; this one has its own.
        _load(environment, "module-null-sink", "media.class=Audio/Source/Virtual", f"sink_name={name}",
              f"rate={rate}", "channels=1", "channel_map=mono")
        _wait("the microphone", lambda: _listed(environment, "sources", name), _folder(environment))
        _wait("the microphone's cable", lambda: subprocess.run(
            ["pw-link", "room:monitor_FL", f"{name}:input_MONO"], env=environment, capture_output=True,
            timeout=20, check=False).returncode == 0, _folder(environment))
        _pactl(environment, "set-default-source", name)
        return
    _load(environment, "module-remap-source", "master=room.monitor", f"source_name={name}", f"rate={rate}",
          "channels=1", "channel_map=mono", "master_channel_map=front-left", "remix=no")
    _wait("the microphone", lambda: _listed(environment, "sources", name), _folder(environment))
    _pactl(environment, "set-default-source", name)


def unplug_microphone(environment):
    """Takes all virtual microphones away; what listens to one sees it vanish."""
    for line in _pactl(environment, "list", "short", "modules").stdout.splitlines():
        fields = line.split("\t")
        if len(fields) > 1 and (fields[1] == "module-remap-source" or "Audio/Source/Virtual" in line):
            _pactl(environment, "unload-module", fields[0])


def _load(environment, *arguments):
    result = _pactl(environment, "load-module", *arguments)
    if result.returncode != 0:
        raise SystemExit(f"virtual-desktop: {arguments[0]} could not be loaded: {result.stderr.strip()}")


def _listed(environment, what, name):
    return any(line.split("\t")[1:2] == [name]
               for line in _pactl(environment, "list", "short", what).stdout.splitlines())


def stop(environment):
    """Ends the server's processes and waits until they are gone; without a server nothing happens."""
    pids = _folder(environment) / "pids"
    if not pids.exists():
        return
    running = [int(line) for line in pids.read_text(encoding="ascii").split()]
    for pid in reversed(running):
        _signal(pid, signal.SIGTERM)
    limit = time.monotonic() + 5
    while any(_alive(pid) for pid in running):
        if time.monotonic() > limit:
            for pid in running:
                _signal(pid, signal.SIGKILL)
            limit = time.monotonic() + 5
        time.sleep(0.02)
    pids.write_text("", encoding="ascii")


def _signal(pid, number):
    try:
        os.kill(pid, number)
    except ProcessLookupError:
        pass


def _alive(pid):
    try:
        # Reaps it if it is ours; a stranger's zombie counts as ended.
        if os.waitpid(pid, os.WNOHANG)[0] == pid:
            return False
    except ChildProcessError:
        pass
    try:
        with open(f"/proc/{pid}/stat", encoding="ascii", errors="replace") as stat:
            return stat.read().rpartition(")")[2].split()[0] != "Z"
    except FileNotFoundError:
        return False
