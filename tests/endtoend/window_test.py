"""One working day with the installed window, by mouse and keyboard, on a screen that nobody sees.

window_test.py PREFIX FOLDER: PREFIX is where the programs are installed, FOLDER is empty.
"""

import os
import pathlib
import random
import subprocess
import sys
import time

from person import Atspi, PATIENCE, click, drag, eventually, hand, press, screen, write

PICTURES = 120
SIZE = (900, 650)
HEADERS = {"Tweak RGB": "[RGB levels]"}

prefix, folder = map(pathlib.Path, sys.argv[1:])
pictures = prefix / "pictures"
results = folder / "results"


def check(holds, what):
    if not holds:
        raise AssertionError(what)


def draw_pictures():
    """Pictures of 1.2 megapixels: a run over all of them can be stopped in its middle."""
    pictures.mkdir()
    results.mkdir()
    dice = random.Random(7)
    for number in range(1, PICTURES + 1):
        width, height = 1280 // PATIENCE, 960 // PATIENCE
        row = bytes(dice.randrange(256) for _ in range(3 * width + height))
        body = b"".join(row[y:y + 3 * width] for y in range(height))
        (pictures / f"p{number:03}.ppm").write_bytes(b"P6\n%d %d\n255\n" % (width, height) + body)


class Window:
    def __init__(self):
        self.program = subprocess.Popen(
            [prefix / "bin/tessarine"],
            env=dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb"))
        self.frame = eventually(self.look, "the window")
        self.page = None

    def look(self):
        for application in screen().children():
            for window in application.children():
                if window.shows and window.has("page tab", "Step 1 : Select Images"):
                    return window
        return None

    def dialog(self, name):
        def look():
            for application in screen().children():
                for window in application.children():
                    if window.shows and window.name == name:
                        return window
            return None
        return eventually(look, f"the dialog '{name}'")

    def step(self, number):
        press(f"alt+{number}")
        time.sleep(0.2)

    def status(self, text):
        eventually(lambda: any(text in (thing.name or "") for thing in self.frame.all()),
                   f"'{text}' in the status bar")

    def file_dialog(self, path):
        """Answers the file dialog that has just opened."""
        def look():
            for application in screen().children():
                for window in application.children():
                    if window.shows and window.role in ("dialog", "file chooser"):
                        return window
            return None
        eventually(look, "a file dialog")
        time.sleep(0.3)
        press("ctrl+a")
        write(str(path))
        press("Return")
        eventually(lambda: look() is None, "the file dialog's end")

    def close(self):
        press("alt+F4")
        check(self.program.wait(20) == 0, "the window ends in peace")


def choose_pictures(window):
    folders = window.frame.find("tree", "Folders")
    folders.rests("table cell", "pictures")
    # A row is as wide as the longest name; its middle may lie beyond the tree.
    click(folders.find("table cell", "pictures"), across=0.1)
    window.status(f"Current Directory : {pictures}")
    window.status(f"Selected File(s):{PICTURES}")
    press("alt+t")
    window.status(f"Basket: {PICTURES} file(s)")
    press("ctrl+s")
    window.file_dialog(folder / "basket.qpkl")
    press("alt+m")
    window.status("Basket: 0 file(s)")
    press("ctrl+o")
    window.file_dialog(folder / "basket.qpkl")
    window.status(f"Basket: {PICTURES} file(s)")


def chain(window):
    return [thing.name for thing in window.frame.find("list", "Function Basket").all("list item")]


def choose_function(window, name):
    """Finds a function as in any tree: by the first letters of its name."""
    tree = window.frame.find("tree", "Functions")
    click(tree)
    press("Home")
    write(name)
    window.frame.find("label", f"Current Function : {HEADERS.get(name, f'[{name}]')}")


def compose(window):
    window.step(2)
    choose_function(window, "Contrast")
    drag(window.frame.find("slider", "Level"), 0.3, 0.5, to_across=0.45)
    press("alt+d")
    choose_function(window, "Tweak RGB")
    drag(window.frame.find("slider", "Red"), 0.5, 0.5, to_across=0.62)
    drag(window.frame.find("slider", "Blue"), 0.5, 0.5, to_across=0.41)
    press("alt+d")
    choose_function(window, "Contour")
    click(window.frame.find("push button", "Second color"))
    picker = window.dialog("Color Picker")
    click(picker.find("spin button", "Red"), times=3)
    write("200")
    time.sleep(0.7)
    click(picker.find("push button", "OK"))
    press("alt+d")
    choose_function(window, "Lens")
    click(window.frame.find("filler", "Original"), 0.3, 0.4)
    press("alt+d")
    expected = ["Contrast", "Tweak RGB", "Contour", "Lens"]
    eventually(lambda: chain(window) == expected, "four functions in the basket")
    press("ctrl+s")
    window.file_dialog(folder / "chain.qfk")
    press("alt+s")
    eventually(lambda: chain(window) == [], "an empty function basket")
    press("ctrl+o")
    window.file_dialog(folder / "chain.qfk")
    eventually(lambda: chain(window) == expected, "the saved functions")


def set_destination(window):
    window.step(3)
    press("alt+d", "ctrl+a")
    write(str(results))
    press("alt+g", "ctrl+a")
    write("Work")
    press("alt+f", "Home", "Down", "Down", "Down", "Down", "Down", "Down", "Down", "Down")


def outputs():
    return sorted(results.iterdir())


def run_stop_run(window):
    window.step(4)
    press("alt+d")
    press("alt+b")
    eventually(lambda: len(outputs()) >= 3, "the first outputs", 60)
    press("alt+s")

    def quiet():
        before = len(outputs())
        time.sleep(1.5)
        return before == len(outputs())
    eventually(quiet, "the end of the stopped run", 60)
    check(3 <= len(outputs()) < PICTURES, f"{len(outputs())} outputs of a stopped run")
    press("alt+b")
    overview = window.frame.find("text", "Fuctions Processing Overview")
    eventually(lambda: "Processing Completed!" in overview.text and len(outputs()) == PICTURES,
               "the end of the second run", 240)


def compare_with_the_runner():
    again = folder / "again"
    again.mkdir()
    subprocess.run([prefix / "bin/tessarine-batch", "--mode", "window", "--quiet",
                    "--pictures", folder / "basket.qpkl", "--functions", folder / "chain.qfk",
                    "--to", again, "--name", "Work", "--format", "bmp"], check=True)
    names = [path.name for path in outputs()]
    check(names == sorted(path.name for path in again.iterdir()), f"the same names as {names}")
    for name in names:
        check((results / name).read_bytes() == (again / name).read_bytes(), f"{name} differs")
    print(f"{len(names)} outputs equal the runner's, byte for byte")


def find_settings_again():
    window = Window()
    window.status(f"Current Directory : {pictures}")
    window.step(3)
    eventually(lambda: window.frame.find("text", "Destination Folder").text.rstrip("/") == str(results),
               "the destination")
    check(window.frame.find("text", "Generic Name").text == "Work", "the generic name")
    check(window.frame.has("combo box", "BMP - Windows Bitmap "), "the format")
    check(window.frame.place[2:] == SIZE, f"the size, not {window.frame.place[2:]}")
    window.step(4)
    check(not window.frame.find("check box", "Show destination folder when Finished").checked,
          "the tick of the destination folder")
    window.close()


def careful_run():
    """A run that leaves out what cannot be read, names it, and keeps it as a list."""
    careful = folder / "careful"
    careful.mkdir()
    broken, gone = pictures / "p002.ppm", pictures / "p005.ppm"
    window = Window()
    window.step(1)
    press("ctrl+o")
    window.file_dialog(folder / "basket.qpkl")
    window.status(f"Basket: {PICTURES} file(s)")
    window.step(2)
    press("ctrl+o")
    window.file_dialog(folder / "chain.qfk")
    eventually(lambda: len(chain(window)) == 4, "the saved functions")
    window.step(3)
    press("alt+d", "ctrl+a")
    write(str(careful))
    broken.write_bytes(b"no picture")
    gone.unlink()

    window.step(4)
    tick = window.frame.find("check box", "Careful run")
    check(not tick.checked, "a careful run is not asked for at the start")
    keep = window.frame.find("push button", "Keep list of failures")
    check(not keep.state(Atspi.StateType.ENABLED), "there is no list to be kept yet")
    click(tick, across=0.2)
    eventually(lambda: tick.checked, "the tick")
    press("alt+b")
    eventually(lambda: len(list(careful.iterdir())) >= 3, "the first outputs", 60)
    # The window is live meanwhile, and its changes are for another run.
    window.step(3)
    press("alt+g", "ctrl+a")
    write("Other")
    window.step(4)
    overview = window.frame.find("text", "Fuctions Processing Overview")
    eventually(lambda: "Processing Completed!" in overview.text, "the end of the careful run", 240)
    lines = overview.text.splitlines()
    check(f" {PICTURES - 2} saved, 0 kept, 2 failed of {PICTURES} pictures" in lines,
          f"the counts in {lines[-8:]}")
    check(lines[-3] == " Failures:" and lines[-2].startswith(f" {broken}: no picture can be read")
          and lines[-1] == f" {gone}: No such file or directory", f"the failures in {lines[-3:]}")

    click(keep)
    window.file_dialog(folder / "failed.qpkl")
    listed = eventually(lambda: (folder / "failed.qpkl").read_bytes(), "the list of failures")
    check(listed == b"".join(bytes(path).ljust(150) for path in (broken, gone)),
          f"the failures are listed, not {listed}")
    window.step(1)
    press("ctrl+o")
    window.file_dialog(folder / "failed.qpkl")
    window.dialog("INVALID FILE ASSOCIATIONS!")
    press("Return")
    window.status("Basket: 1 file(s)")
    window.close()

    again = folder / "careful again"
    again.mkdir()
    status = subprocess.run(
        [prefix / "bin/tessarine-batch", "--quiet", "--pictures", folder / "basket.qpkl",
         "--functions", folder / "chain.qfk", "--to", again, "--name", "Work", "--format", "bmp"],
        check=False, stderr=subprocess.DEVNULL).returncode
    check(status == 1, f"the runner ends with {status}")
    names = sorted(path.name for path in careful.iterdir())
    check(len(names) == PICTURES - 2, f"{len(names)} outputs of a careful run")
    check(names == sorted(path.name for path in again.iterdir()), f"the same names as {names}")
    for name in names:
        check((careful / name).read_bytes() == (again / name).read_bytes(), f"{name} differs")
    print(f"{len(names)} outputs of a careful run equal the runner's, byte for byte")

    window = Window()
    window.step(4)
    check(not window.frame.find("check box", "Careful run").checked, "the tick is not stored")
    window.close()


def main():
    draw_pictures()
    window = Window()
    try:
        choose_pictures(window)
        compose(window)
        set_destination(window)
        run_stop_run(window)
        hand("getactivewindow", "windowsize", "--sync", *SIZE)
        eventually(lambda: window.frame.place[2:] == SIZE, "the new size")
        window.close()
        compare_with_the_runner()
        find_settings_again()
        careful_run()
    except BaseException:
        subprocess.run(["import", "-window", "root", folder / "screen.png"], check=False)
        print(screen().tree(), file=sys.stderr)
        raise
    finally:
        window.program.kill()


main()
