#!/usr/bin/env python3
"""Makes the pictures of the user guide from the real Organiser.

Runs the built NMain5 on a private Xvfb screen with the openbox window
manager (both from scripts/install-deps.sh), in a fresh home folder whose data
folders hold the example assays, waits until the screen stops changing and
saves it as a PNG in docs/help/images. Xvfb keeps its screen in a file (XWD
format, -fbdir), which this script reads itself, so that no screen-grabbing
tool is needed.

    scripts/help-screenshots.py [BUILD_DIR] [--size WxH] [--scale N] [--output FILE]

With --size, --scale or --output it takes the main window at another screen
size or scale factor (QT_SCALE_FACTOR) into FILE instead, for checking the
window on small screens and with large text.
"""
import argparse
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import zlib

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
WIDTH, HEIGHT = 1100, 720  # the user guide's pictures; --size changes them
SETTLE_SECONDS, TIME_LIMIT_SECONDS = 2.0, 60.0


def read_screen(path):
    """The screen as (width, height, rows of RGB bytes) from Xvfb's XWD file."""
    with open(path, "rb") as f:
        data = f.read()
    fields = struct.unpack(">25I", data[:100])
    header_size, width, height = fields[0], fields[4], fields[5]
    byte_order, bits_per_pixel, bytes_per_line, ncolors = fields[7], fields[11], fields[12], fields[19]
    if bits_per_pixel != 32:
        raise SystemExit(f"unexpected screen format: {bits_per_pixel} bits per pixel")
    start = header_size + ncolors * 12
    rows = []
    for y in range(height):
        line = data[start + y * bytes_per_line:start + y * bytes_per_line + width * 4]
        if byte_order == 0:  # least significant byte first: B G R X
            rows.append(bytes(b for i in range(0, len(line), 4) for b in (line[i + 2], line[i + 1], line[i])))
        else:
            rows.append(bytes(b for i in range(0, len(line), 4) for b in (line[i + 1], line[i + 2], line[i + 3])))
    return width, height, rows


def write_png(path, width, height, rows):
    def chunk(kind, payload):
        return struct.pack(">I", len(payload)) + kind + payload + struct.pack(">I", zlib.crc32(kind + payload))

    raw = b"".join(b"\x00" + row for row in rows)
    png = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
    png += chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b"")
    with open(path + ".part", "wb") as f:
        f.write(png)
    os.replace(path + ".part", path)


def wait_until_settled(screen_file):
    """Waits until the screen shows more than one colour and stays the same."""
    deadline = time.monotonic() + TIME_LIMIT_SECONDS
    last, since = None, time.monotonic()
    while time.monotonic() < deadline:
        time.sleep(0.25)
        with open(screen_file, "rb") as f:
            now = f.read()
        if now != last:
            last, since = now, time.monotonic()
        elif len(set(now[-WIDTH * 4 * 50:])) > 8 and time.monotonic() - since >= SETTLE_SECONDS:
            return
    raise SystemExit("the Organiser's window did not appear in time")


def seed_home(home):
    """A home folder whose data folders hold the example assays."""
    assays = os.path.join(home, "Nebra Data", "My Assays")
    shutil.copytree(os.path.join(ROOT, "data", "Example Assays"), assays)
    for name in ("Read Configurations", "Reports"):
        os.makedirs(os.path.join(assays, name), exist_ok=True)
    for name in ("config", "state", "data", "cache", "runtime"):
        os.makedirs(os.path.join(home, "." + name), mode=0o700, exist_ok=True)


def main():
    global WIDTH, HEIGHT
    parser = argparse.ArgumentParser(description="Pictures of the Organiser's main window.")
    parser.add_argument("build", nargs="?", default=os.path.join(ROOT, "build"))
    parser.add_argument("--size", default=f"{WIDTH}x{HEIGHT}", help="screen size, WIDTHxHEIGHT")
    parser.add_argument("--scale", default="1", help="QT_SCALE_FACTOR of the program")
    parser.add_argument("--output", help="the PNG to write (default: the user guide's picture)")
    args = parser.parse_args()
    WIDTH, HEIGHT = (int(n) for n in args.size.split("x"))
    build = os.path.abspath(args.build)
    program = os.path.join(build, "src", "NMain5")
    if not os.access(program, os.X_OK):
        raise SystemExit(f"{program} is not built: cmake --build {build} --target NMain5")
    target = os.path.abspath(args.output) if args.output else os.path.join(ROOT, "docs", "help", "images",
                                                                           "organiser-window.png")
    os.makedirs(os.path.dirname(target), exist_ok=True)
    with tempfile.TemporaryDirectory() as tmp:
        home = os.path.join(tmp, "home")
        seed_home(home)
        env = dict(os.environ, HOME=home, XDG_CONFIG_HOME=home + "/.config", XDG_STATE_HOME=home + "/.state",
                   XDG_DATA_HOME=home + "/.data", XDG_CACHE_HOME=home + "/.cache",
                   XDG_RUNTIME_DIR=home + "/.runtime", QTWEBENGINE_DISABLE_SANDBOX="1", QT_QPA_PLATFORM="xcb",
                   QT_SCALE_FACTOR=args.scale)
        display = f":{90 + os.getpid() % 100}"
        env["DISPLAY"] = display
        started = []
        try:
            started.append(subprocess.Popen(["Xvfb", display, "-screen", "0", f"{WIDTH}x{HEIGHT}x24", "-fbdir",
                                             tmp, "-nolisten", "tcp"], stderr=subprocess.DEVNULL))
            screen_file = os.path.join(tmp, "Xvfb_screen0")
            for _ in range(100):
                if os.path.exists(screen_file):
                    break
                time.sleep(0.1)
            started.append(subprocess.Popen(["openbox"], env=env, stderr=subprocess.DEVNULL))
            started.append(subprocess.Popen([program], env=env, stderr=subprocess.DEVNULL))
            wait_until_settled(screen_file)
            write_png(target, *read_screen(screen_file))
            print(f"wrote {target}")
        finally:
            for process in reversed(started):
                process.terminate()
                try:
                    process.wait(timeout=10)
                except subprocess.TimeoutExpired:
                    process.kill()


if __name__ == "__main__":
    main()
