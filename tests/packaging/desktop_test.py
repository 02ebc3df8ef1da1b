"""A person opens lists by a double click in a file manager of a system in a folder.

desktop_test.py TREE SHARE SCREENS: TREE is the system, SHARE a folder that it has under the same
name, pictures of the screen go into SCREENS.
"""

import os
import pathlib
import subprocess
import sys
import time

tree, share, screens = map(pathlib.Path, sys.argv[1:])

# The bus is reached by the same name from within.
os.environ["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={share}/bus"
os.environ["XDG_RUNTIME_DIR"] = str(share / "run")
(share / "run").mkdir(mode=0o700)
subprocess.run(["dbus-daemon", "--session", "--fork",
                f"--address={os.environ['DBUS_SESSION_BUS_ADDRESS']}"], check=True)

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "endtoend"))
from person import click, eventually, press, screen  # noqa: E402

LISTS = "/home/tester/lists"
FUNCTIONS = ["Tweak RGB", "Contrast", "Saturation", "Gamma Correction"]


def inside(*command):
    """Starts a program in the system."""
    kept = {name: os.environ[name]
            for name in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR")}
    return subprocess.Popen(
        ["chroot", tree, "/usr/bin/env", "-i", "PATH=/usr/bin:/bin", "LANG=C.UTF-8", "HOME=/root",
         # Which of the desktops it is tells xdg-open whom to ask.
         "XDG_CURRENT_DESKTOP=GNOME",
         "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1", "GTK_MODULES=gail:atk-bridge",
         *[f"{name}={value}" for name, value in kept.items()], *command])


def said(*command):
    return subprocess.run(["chroot", tree, *command], check=True, capture_output=True,
                          text=True).stdout


def picture(name):
    time.sleep(1)
    subprocess.run(["import", "-window", "root", screens / f"{name}.png"], check=True)


def window():
    for application in screen().children():
        for frame in application.children():
            if frame.shows and frame.has("page tab", "Step 1 : Select Images"):
                return frame
    return None


def check_and_close(way, name):
    """What the list holds has to be there."""
    frame = eventually(window, f"the window for {name}", 40)
    if name.endswith(".qfk"):
        press("alt+2")
        eventually(lambda: [thing.name for thing in
                            frame.find("list", "Function Basket").all("list item")] == FUNCTIONS,
                   "the functions of the list")
    else:
        eventually(lambda: any("Basket: 3 file(s)" in (thing.name or "") for thing in frame.all()),
                   "the pictures of the list")
    picture(f"{way}-{name}")
    press("alt+F4")
    eventually(lambda: window() is None, "the window's end")


def opened_by_double_click():
    manager = inside("thunar", LISTS)

    def shown(name):
        for application in screen().children():
            for frame in application.children():
                for thing in frame.all("table cell", name):
                    if thing.place[2] > 0:
                        return thing
        return None

    def bar():
        for application in screen().children():
            for frame in application.children():
                if frame.shows and next(frame.all("status bar"), None):
                    return frame
        return None
    eventually(bar, "the file manager", 40)
    picture("file-manager")
    # What stands in a list has a name, and what is among icons has none.
    press("ctrl+2")
    for name in ("warm.qfk", "trip.qpkl"):
        click(eventually(lambda: shown(name), f"{name} in the file manager"), across=0.2, times=2)
        check_and_close("double-click", name)
    manager.kill()


def opened_by_commands():
    for command in ("gio", "open"), ("xdg-open",):
        inside(*command, f"{LISTS}/warm.qfk")
        check_and_close(command[0], "warm.qfk")


def main():
    for name, kind in ("warm.qfk", "function"), ("trip.qpkl", "picture"):
        told = said("gio", "info", "-a", "standard::content-type,standard::icon", f"{LISTS}/{name}")
        for what in (f"content-type: application/x-tessarine-{kind}-list",
                     f"icon: application-x-tessarine-{kind}-list"):
            if what not in told:
                raise AssertionError(f"{name}: no '{what}' in {told}")
    try:
        opened_by_commands()
        opened_by_double_click()
    except BaseException:
        picture("failure")
        print(screen().tree(), file=sys.stderr)
        raise


main()
