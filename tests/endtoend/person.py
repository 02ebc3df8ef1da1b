"""A person in front of the window: sees what a screen reader sees, and has a mouse and a keyboard."""

import os
import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402


# Programs under a sanitizer take a multiple of the time.
PATIENCE = int(os.environ.get("TESSARINE_TEST_PATIENCE", "1"))


class Missing(Exception):
    """Something that should be on the screen is not."""


def eventually(look, what, seconds=20):
    """What `look` gives as soon as it gives anything; a failure after `seconds`."""
    seconds *= PATIENCE
    end = time.monotonic() + seconds
    while True:
        try:
            found = look()
        except Exception as reason:  # The tree changes while it is read.
            found, why = None, reason
        else:
            why = ""
        if found:
            return found
        if time.monotonic() > end:
            raise Missing(f"{what}: not seen after {seconds} s {why}")
        time.sleep(0.05)


class Thing:
    """One thing on the screen."""

    def __init__(self, accessible):
        self.accessible = accessible

    @property
    def name(self):
        return self.accessible.get_name()

    @property
    def role(self):
        return self.accessible.get_role_name()

    def state(self, state):
        return self.accessible.get_state_set().contains(state)

    @property
    def shows(self):
        return self.state(Atspi.StateType.SHOWING)

    @property
    def checked(self):
        return self.state(Atspi.StateType.CHECKED)

    @property
    def place(self):
        """Left, top, width and height on the screen, in pixels."""
        box = Atspi.Component.get_extents(self.accessible, Atspi.CoordType.SCREEN)
        return box.x, box.y, box.width, box.height

    @property
    def text(self):
        return Atspi.Text.get_text(self.accessible, 0, -1)

    def children(self):
        for index in range(self.accessible.get_child_count()):
            child = self.accessible.get_child_at_index(index)
            if child is not None:
                yield Thing(child)

    def all(self, role=None, name=None):
        """Whatever shows below, top down."""
        for child in self.children():
            if not child.shows:
                continue
            if (role is None or child.role == role) and (name is None or child.name == name):
                yield child
            yield from child.all(role, name)

    def find(self, role, name, seconds=20):
        return eventually(
            lambda: next(self.all(role, name), None), f"{role} '{name}'", seconds)

    def rests(self, role, name):
        """Waits until a thing below has stood within this one for half a second."""
        def stands():
            left, top, width, height = self.place
            x, y, w, h = self.find(role, name).place
            return top <= y and y + h <= top + height and (x, y, w, h)

        def look():
            before = stands()
            time.sleep(0.5)
            return before and before == stands()
        eventually(look, f"{role} '{name}' at rest")

    def has(self, role, name):
        return next(self.all(role, name), None) is not None

    def tree(self, depth=0):
        """The things below, for a person who looks for a mistake in a test."""
        lines = [f"{'  ' * depth}{self.role} {self.name!r} {self.place}"]
        for child in self.children():
            if child.shows:
                lines.append(child.tree(depth + 1))
        return "\n".join(lines)


def screen():
    return Thing(Atspi.get_desktop(0))


def hand(*commands):
    """Moves mouse and keyboard, as xdotool takes it."""
    subprocess.run(["xdotool", *map(str, commands)], check=True)
    time.sleep(0.05)


def point_at(thing, across=0.5, down=0.5):
    left, top, width, height = thing.place
    hand("mousemove", "--sync", round(left + width * across), round(top + height * down))


def click(thing, across=0.5, down=0.5, times=1):
    point_at(thing, across, down)
    hand("click", "--repeat", times, "--delay", 60, 1)


def drag(thing, across, down, to=None, to_across=0.5, to_down=0.5):
    """Drags from a place of a thing to a place of another, or of the same."""
    point_at(thing, across, down)
    hand("mousedown", 1)
    left, top, width, height = (to or thing).place
    x, y = round(left + width * to_across), round(top + height * to_down)
    # On the way there are moves, as with any hand.
    hand("mousemove_relative", "--sync", "--", 12 if to_across >= across else -12, 2)
    hand("mousemove", "--sync", x - 3, y)
    hand("mousemove", "--sync", x, y)
    hand("mouseup", 1)


def press(*keys):
    hand("key", "--delay", 40, *keys)


def write(text):
    hand("type", "--delay", 15, "--", text)
