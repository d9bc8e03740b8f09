#!/usr/bin/env python3
"""End-to-end test of Brivanta in a real X window, run under xvfb-run (ctest does): the onboarding, "Add
Network Settings" (printed, saved in the DNS slot, pill red), and launchCount across a relaunch that shows
the onboarding again. Switching blocking on changes the machine's DNS, so it is left to the namespace
tests (tests/system)."""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import xwindow  # noqa: E402
from xwindow import wait_until  # noqa: E402

ONBOARDING_PAGES = 9
SAVED_LINE = "DNS settings was saved"
RESOLVER_URL = "https://dns.nextdns.io/c7e091"
# The onboarding button's centre: 20 above the bottom edge, its height is two 16-point paddings and a line.
ONBOARDING_BUTTON_FROM_BOTTOM = 46


def page_dot(image):
    """x of the onboarding's current-page dot (the only fully white pixels between the pages and the
    button), None when there is none (not the onboarding, or not drawn yet)."""
    xs = [x for y in range(image.height - 110, image.height - 80) for x in range(image.width)
          if min(image.pixel(x, y)) > 230]
    return round(sum(xs) / len(xs)) if xs else None


def is_divider_row(image, y):
    """The main screen's rules: one-pixel rows of white at 0.2 over black, across the content width."""
    margin = 24
    row = [image.pixel(x, y) for x in range(margin, image.width - margin)]
    grey = sum(1 for r, g, b in row if abs(r - g) <= 2 and abs(g - b) <= 2 and 40 <= r <= 62)
    return grey >= 0.95 * len(row)


def dividers(image):
    rows = [y for y in range(image.height) if is_divider_row(image, y)]
    # One rule may cover two rows when it falls between pixels.
    return [y for i, y in enumerate(rows) if i == 0 or rows[i - 1] != y - 1]


def shows_disabled(image, top, bottom):
    """The status card, between the first two rules, is tinted red (red at 0.2 over the card fills some
    15000 pixels; the symbol and the text add to it), not green."""
    reddish = image.count(lambda r, g, b: r > g + 20 and r > b + 20, 0, top + 1, image.width, bottom)
    greenish = image.count(lambda r, g, b: g > r + 20 and g > b + 20, 0, top + 1, image.width, bottom)
    assert reddish > 5000 and reddish > 10 * greenish, f"status not red: (red, green) pixels {reddish, greenish}"


def read_launch_count(config_home):
    """launchCount from the preferences file (QSettings, native format), None when absent."""
    for folder, _, files in os.walk(config_home):
        for name in (n for n in files if n.endswith(".conf")):
            with open(os.path.join(folder, name), encoding="utf-8") as settings:
                for line in settings:
                    key, _, value = line.strip().partition("=")
                    if key == "launchCount":
                        return int(value)
    return None


class App:
    """One run of the application: its window; its standard output goes to a file in the artifacts."""

    def __init__(self, executable, env, artifacts, name):
        self.artifacts, self.name = artifacts, name
        self.stdout = os.path.join(artifacts, f"{name}.stdout")
        self.process = subprocess.Popen([executable], env=env, stdout=open(self.stdout, "wb"),
                                        stderr=open(os.path.join(artifacts, f"{name}.stderr"), "wb"))
        self.window = xwindow.find_window(self.process.pid, 20)
        _, _, self.width, self.height = xwindow.window_geometry(self.window)

    def wait_line(self, text, timeout):
        def printed():
            with open(self.stdout, encoding="utf-8", errors="replace") as out:
                return text in out.read().splitlines()
        wait_until(printed, timeout, f"{self.name}: the line {text!r} on stdout")

    def capture(self):
        return xwindow.capture(self.window)

    def settled(self, timeout=10, label=None):
        """The window's picture once two captures in a row agree (animations finished)."""
        previous = [None]

        def stable():
            image = xwindow.capture(self.window)
            same = previous[0] is not None and image.rgb == previous[0].rgb
            previous[0] = image
            return image if same else None
        image = wait_until(stable, timeout, f"{self.name}: the window to stop changing", interval=0.1)
        if label:
            image.save_ppm(os.path.join(self.artifacts, f"{self.name}-{label}.ppm"))
        return image

    def click(self, x, y):
        xwindow.xdotool("mousemove", "--window", self.window, x, y, "click", "1")

    def quit(self):
        self.process.terminate()
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--app", required=True)
    parser.add_argument("--dns", required=True)
    parser.add_argument("--artifacts", required=True, help="screenshots and logs are kept here")
    args = parser.parse_args()
    shutil.rmtree(args.artifacts, ignore_errors=True)
    os.makedirs(args.artifacts)

    home = tempfile.mkdtemp(prefix="brivanta-e2e-home-")
    runtime = os.path.join(home, "runtime")
    os.mkdir(runtime, 0o700)
    env = {key: value for key, value in os.environ.items()
           if key not in ("SIMULATOR_DEVICE_NAME", "XCODE_RUNNING_FOR_PREVIEWS", "QT_QUICK_BACKEND")
           and not key.startswith("XDG_")}
    env.update({
        "HOME": home,
        "XDG_CONFIG_HOME": os.path.join(home, ".config"),
        "XDG_CACHE_HOME": os.path.join(home, ".cache"),
        "XDG_DATA_HOME": os.path.join(home, ".local", "share"),
        "XDG_RUNTIME_DIR": runtime,
        "QT_QPA_PLATFORM": "xcb",
        # Links must not leave the test (no browser or mailer is started).
        "BROWSER": "true",
    })

    def dns(*command, expected_exit=0):
        result = subprocess.run([args.dns, *command], env=env, capture_output=True, text=True, timeout=20)
        if result.returncode != expected_exit:
            raise AssertionError(f"brivanta-dns {' '.join(command)} exited {result.returncode}: {result.stderr}")
        return result.stdout

    def click_through_onboarding(app):
        """Nine presses of the onboarding button: each but the last moves the page dot one step right."""
        wait_until(lambda: page_dot(app.capture()) is not None, 20, f"{app.name}: the onboarding's page dots")
        picture = app.settled(label="onboarding-1")
        dots = [page_dot(picture)]
        for press in range(1, ONBOARDING_PAGES + 1):
            app.click(app.width // 2, app.height - ONBOARDING_BUTTON_FROM_BOTTOM)
            wait_until(lambda: page_dot(app.capture()) != dots[-1], 10, f"the page to change after press {press}")
            picture = app.settled()
            if press == ONBOARDING_PAGES:
                assert page_dot(picture) is None, "the last press did not end the onboarding"
                break
            dots.append(page_dot(picture))
            step_size = dots[1] - dots[0]
            assert step_size > 0 and abs(dots[-1] - (dots[0] + press * step_size)) <= 1, \
                f"press {press} did not move to the next page: page dots at {dots}"
        return picture

    def main_screen(picture, label):
        rules = dividers(picture)
        assert len(rules) >= 4, f"{label}: the main screen's rules are not there (found {rules})"
        shows_disabled(picture, rules[0], rules[1])
        return rules

    config_home = env["XDG_CONFIG_HOME"]
    apps = []
    try:
        print("e2e: first launch", flush=True)
        app = App(args.app, env, args.artifacts, "launch1")
        apps.append(app)
        rules = main_screen(click_through_onboarding(app), "main")
        wait_until(lambda: read_launch_count(config_home) == 1, 10, "launchCount 1 after the first main screen")

        print("e2e: press Add Network Settings", flush=True)
        app.click(app.width // 2, (rules[2] + rules[3]) // 2)
        app.wait_line(SAVED_LINE, 15)
        # Exit status 1: blocking is not on.
        status = dns("status", expected_exit=1)
        assert f"Saved DNS settings: DNS-over-HTTPS, server URL {RESOLVER_URL}\n" in status, status
        assert "Blocking: off." in status, status
        main_screen(app.settled(label="saved"), "saved")
        app.quit()

        print("e2e: second launch", flush=True)
        app = App(args.app, env, args.artifacts, "launch2")
        apps.append(app)
        wait_until(lambda: page_dot(app.capture()) is not None, 20, "the onboarding on the second launch")
        assert read_launch_count(config_home) == 1, "the onboarding alone counted a launch"
        main_screen(click_through_onboarding(app), "main-again")
        wait_until(lambda: read_launch_count(config_home) == 2, 10, "launchCount 2 after the second main screen")
        print("e2e: passed", flush=True)
    finally:
        for launched in apps:
            launched.quit()
        shutil.rmtree(home, ignore_errors=True)


if __name__ == "__main__":
    main()
