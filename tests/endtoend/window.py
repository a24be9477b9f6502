"""Drives the real window through its accessibility tree, as a screen reader would.

    from window import Application, Window

    with Application(program, environment) as application:
        window = application.window()
        window.find("password text", "Password").type("secret")
        window.find("push button", "Sign In").press()
        window.find("label", "Ready to Record")

Everything is found by role and name. Finding waits for the condition and never for a time; the time given only
bounds the wait. Roles are those of AT-SPI, see `Window.tree` for what is there.
"""
import os
import pathlib
import re
import signal
import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 30.0  # seconds; a bound, not a delay
_PAUSE = 0.05


class NotFound(AssertionError):
    """What was looked for did not come."""


def wait_for(what, condition, seconds=PATIENCE):
    """Polls until `condition()` gives something true, and answers with that."""
    limit = time.monotonic() + seconds
    while True:
        try:
            result = condition()
        except GLib.Error:
            result = None  # the element went away while it was looked at
        if result:
            return result
        if time.monotonic() > limit:
            raise NotFound(f"{what}: did not come within {seconds:g} s")
        time.sleep(_PAUSE)


class Element:
    """One accessible element."""

    def __init__(self, accessible):
        self.accessible = accessible

    @property
    def name(self):
        return self.accessible.get_name() or ""

    @property
    def role(self):
        return self.accessible.get_role_name() or ""

    @property
    def description(self):
        return self.accessible.get_description() or ""

    def has_state(self, state):
        """`state` is the lower-case name of an AT-SPI state, such as "checked"."""
        return self.accessible.get_state_set().contains(getattr(Atspi.StateType, state.upper()))

    @property
    def enabled(self):
        return self.has_state("enabled") and self.has_state("sensitive")

    @property
    def checked(self):
        return self.has_state("checked")

    @property
    def selected(self):
        return self.has_state("selected")

    @property
    def focused(self):
        return self.has_state("focused")

    @property
    def text(self):
        """The text of a field, or what a static text shows."""
        interface = self.accessible.get_text_iface()
        if interface is None:
            return self.name
        return Atspi.Text.get_text(interface, 0, Atspi.Text.get_character_count(interface))

    def press(self):
        """Does what a click on it does; waits until it can be clicked."""
        wait_for(f"{self} enabled", lambda: self.enabled)
        self._act("Press")
        return self

    def _act(self, wanted):
        interface = self.accessible.get_action_iface()
        names = []
        for index in range(Atspi.Action.get_n_actions(interface) if interface else 0):
            name = Atspi.Action.get_action_name(interface, index)
            names.append(name)
            if name.lower() == wanted.lower():
                Atspi.Action.do_action(interface, index)
                return
        raise NotFound(f"{self} has no action {wanted}, only {names}")

    def actions(self):
        interface = self.accessible.get_action_iface()
        return [Atspi.Action.get_action_name(interface, index)
                for index in range(Atspi.Action.get_n_actions(interface))] if interface else []

    def set_text(self, text):
        """Replaces a field's text through the tree."""
        interface = self.accessible.get_editable_text_iface()
        if interface is None:
            raise NotFound(f"{self} is no editable text")
        Atspi.EditableText.set_text_contents(interface, text)
        return self

    def focus(self):
        interface = self.accessible.get_component_iface()
        Atspi.Component.grab_focus(interface)
        wait_for(f"{self} focused", lambda: self.focused)
        return self

    def type(self, text):
        """Focuses a field, empties it and types with the keyboard."""
        self.focus()
        key("ctrl+a", "BackSpace")
        type_text(text)
        return self

    def extents(self):
        """(x, y, width, height) on the screen."""
        box = Atspi.Component.get_extents(self.accessible.get_component_iface(), Atspi.CoordType.SCREEN)
        return box.x, box.y, box.width, box.height

    def click(self, button=1, repeat=1):
        """Clicks into its middle with the pointer."""
        x, y, width, height = self.extents()
        subprocess.run(["xdotool", "mousemove", str(x + width // 2), str(y + height // 2), "click", "--repeat",
                        str(repeat), "--delay", "60", str(button)], check=True)
        return self

    def children(self):
        for index in range(self.accessible.get_child_count()):
            child = self.accessible.get_child_at_index(index)
            if child is not None:
                yield Element(child)

    def walk(self):
        """All elements below this one that a person could see."""
        for child in self.children():
            try:
                if child.has_state("showing") or child.role in ("frame", "application", "dialog", "popup menu"):
                    yield child
                yield from child.walk()
            except GLib.Error:
                continue  # gone meanwhile

    def find_all(self, role=None, name=None, description=None):
        """What is there now. `name` and `description` are texts or compiled patterns."""
        return [element for element in self.walk()
                if _fits(element.role, role) and _fits(element.name, name)
                and _fits(element.description, description)]

    def find(self, role=None, name=None, description=None, seconds=PATIENCE):
        """The first that fits, waited for."""
        try:
            return wait_for(_describe(role, name, description),
                            lambda: next(iter(self.find_all(role, name, description)), None), seconds)
        except NotFound as error:
            raise NotFound(f"{error}\n{self.tree()}") from None

    def wait_gone(self, role=None, name=None, description=None, seconds=PATIENCE):
        """Waits until nothing fits any more."""
        wait_for("the end of " + _describe(role, name, description),
                 lambda: not self.find_all(role, name, description), seconds)

    def tree(self, indent=0):
        """The elements as text, for reports of failures."""
        lines = []
        for child in self.children():
            try:
                states = [name for name in ("focused", "checked", "selected") if child.has_state(name)]
                if not child.enabled:
                    states.append("disabled")
                if not child.has_state("showing"):
                    states.append("hidden")
                lines.append(f"{'  ' * indent}{child.role} {child.name!r}"
                             + (f" ({child.description})" if child.description else "")
                             + (f" [{', '.join(states)}]" if states else ""))
                lines.append(child.tree(indent + 1))
            except GLib.Error:
                continue
        return "\n".join(line for line in lines if line)

    def __str__(self):
        return f"{self.role} {self.name!r}"


class Window(Element):
    """The application's node of the tree: all of its windows."""


def _fits(value, wanted):
    if wanted is None:
        return True
    if isinstance(wanted, re.Pattern):
        return wanted.search(value) is not None
    return value == wanted


def _describe(role, name, description):
    parts = [role or "element"]
    if name is not None:
        parts.append(repr(name.pattern if isinstance(name, re.Pattern) else name))
    if description is not None:
        parts.append(f"described {getattr(description, 'pattern', description)!r}")
    return " ".join(parts)


def type_text(text):
    """Types with the keyboard, into whatever has the focus."""
    subprocess.run(["xdotool", "type", "--delay", "12", text], check=True)


def key(*names):
    """Presses keys by xdotool's names, such as "Tab" or "shift+F10"."""
    subprocess.run(["xdotool", "key", "--delay", "20", *names], check=True)


def screenshot(path, scale=None):
    """Writes a PNG of the whole display; `scale` such as "50%" makes it smaller."""
    path = pathlib.Path(path)
    path.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(["import", "-window", "root", *(["-resize", scale] if scale else []), str(path)], check=True)
    return path


class Application:
    """The program, started for the time of a `with`; ended by closing its window, or by force on a failure."""

    def __init__(self, program, environment=None, log=None):
        self.program = str(program)
        self.environment = {**os.environ, **(environment or {})}
        self.log_path = pathlib.Path(log) if log else None
        self.process = None

    def __enter__(self):
        self._log = open(self.log_path, "ab") if self.log_path else None
        self.process = subprocess.Popen([self.program], env=self.environment, stdout=self._log,
                                        stderr=self._log)
        return self

    def __exit__(self, kind, *_):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL if kind else signal.SIGTERM)
            self.process.wait(20)
        if self._log:
            self._log.close()

    def window(self, seconds=60):
        """The program's node in the tree, once it has a window."""
        def look():
            if self.process.poll() is not None:
                raise NotFound(f"{self.program} ended with {self.process.returncode}")
            desktop = Atspi.get_desktop(0)
            for index in range(desktop.get_child_count()):
                node = desktop.get_child_at_index(index)
                if node is not None and node.get_process_id() == self.process.pid and node.get_child_count() > 0:
                    return Window(node)
            return None
        window = wait_for("the window", look, seconds)
        self.raise_window()
        return window

    def window_id(self):
        """The window's number in the X server, once it can be seen."""
        return subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--pid", str(self.process.pid)],
                              check=True, capture_output=True, text=True, timeout=60).stdout.split()[-1]

    def window_size(self):
        """(width, height) of what is inside the window's frame."""
        shell = subprocess.run(["xdotool", "getwindowgeometry", "--shell", self.window_id()], check=True,
                               capture_output=True, text=True, timeout=60).stdout
        values = dict(line.split("=") for line in shell.split())
        return int(values["WIDTH"]), int(values["HEIGHT"])

    def resize_window(self, width, height):
        """Has the window manager do it, as dragging the frame would: within the limits that the program sets."""
        subprocess.run(["wmctrl", "-i", "-r", self.window_id(), "-e", f"0,-1,-1,{width},{height}"], check=True,
                       timeout=60)

    def raise_window(self):
        """Gives the window the keyboard, as a click on its title would."""
        subprocess.run(["xdotool", "windowactivate", "--sync", self.window_id()], check=True, timeout=60)

    def close(self, seconds=30):
        """Has the window manager close the window, as its cross does, and gives the exit code.

        Not by a key: the window manager takes keys only while no other program holds the keyboard.
        """
        subprocess.run(["wmctrl", "-i", "-c", self.window_id()], check=True, timeout=60)
        return self.process.wait(seconds)


if __name__ == "__main__":
    sys.exit("This file is a library; see its first lines.")
