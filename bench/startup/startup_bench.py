#!/usr/bin/env python3
"""Start-up and memory of the application against a bare Qt Quick window, each on the same renderer.

Launches four programs in turn (each takes each place in the order) with the first-frame probe preloaded:
the app as it starts (without a GPU it picks Qt Quick's software renderer), the app held to OpenGL
(QSG_RHI_BACKEND=opengl: Mesa's CPU rasterizer here), and the bare window on each of the two;
first each launch with a fresh temporary HOME (first launches: the figures the targets apply to), then
each program with one HOME kept across its launches (later launches, `warm_` lines), and measures:
  first frame: from just before the process is spawned to its first QQuickWindow::frameSwapped
               (both on CLOCK_MONOTONIC: Python's time.monotonic_ns() and the probe's clock_gettime);
  idle RSS:    VmRSS of /proc/<pid>/status, --settle seconds after the first frame.
The headline ratios compare the app with the bare window on the renderer the app picked (the probe
reports it); the OpenGL pair and the app against the bare window on OpenGL follow for reference.
Also the medians of two intermediate marks: the QGuiApplication constructed, and the window exposed (its
scene loaded and shown; what follows up to the first frame is rendering it).
Prints `name: value` lines. Needs a display (run under xvfb-run -a).
"""

import argparse
import os
import selectors
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

PROBE_PREFIX = "brivanta-probe "


def read_rss_kib(pid):
    with open(f"/proc/{pid}/status") as status:
        for line in status:
            if line.startswith("VmRSS:"):
                return int(line.split()[1])
    raise RuntimeError(f"no VmRSS for {pid}")


def make_home():
    home = tempfile.mkdtemp(prefix="brivanta-bench-home-")
    os.mkdir(os.path.join(home, "runtime"), 0o700)
    return home


def run_once(executable, probe, settle, timeout, home=None, extra_env=None):
    """One launch. With home None, a fresh HOME made and removed for this launch alone."""
    fresh = home is None
    if fresh:
        home = make_home()
    runtime = os.path.join(home, "runtime")
    env = dict(os.environ)
    env.update({
        "HOME": home,
        "XDG_CONFIG_HOME": os.path.join(home, ".config"),
        "XDG_CACHE_HOME": os.path.join(home, ".cache"),
        "XDG_DATA_HOME": os.path.join(home, ".local", "share"),
        "XDG_RUNTIME_DIR": runtime,
        # The status check then skips the DNS slot: no platform call differs between runs.
        "SIMULATOR_DEVICE_NAME": "Brivanta start-up bench",
        "LD_PRELOAD": probe,
    })
    env.update(extra_env or {})
    start = time.monotonic_ns()
    process = subprocess.Popen([executable], env=env, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    try:
        marks = {}
        api = "unknown"
        selector = selectors.DefaultSelector()
        selector.register(process.stderr, selectors.EVENT_READ)
        buffer = b""
        deadline = time.monotonic() + timeout
        while "first-frame" not in marks:
            remaining = deadline - time.monotonic()
            if remaining <= 0:
                raise RuntimeError(f"{executable}: no first frame within {timeout} s")
            if not selector.select(remaining):
                continue
            chunk = os.read(process.stderr.fileno(), 65536)
            if not chunk:
                raise RuntimeError(f"{executable} exited ({process.wait()}) before its first frame")
            buffer += chunk
            *lines, buffer = buffer.split(b"\n")
            for line in lines:
                text = line.decode(errors="replace")
                if text.startswith(PROBE_PREFIX):
                    what, value = text[len(PROBE_PREFIX):].split()
                    if what == "graphics-api":
                        api = value
                    else:
                        marks[what] = int(value)
        rss_first_frame = read_rss_kib(process.pid)
        time.sleep(settle)
        if process.poll() is not None:
            raise RuntimeError(f"{executable} exited ({process.returncode}) while idle")
        rss_idle = read_rss_kib(process.pid)
    finally:
        process.terminate()
        try:
            process.wait(5)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
        if fresh:
            shutil.rmtree(home, ignore_errors=True)
    return {
        "first_frame_ms": (marks["first-frame"] - start) / 1e6,
        "to_app_object_ms": (marks.get("app-constructed", float("nan")) - start) / 1e6,
        "to_exposed_ms": (marks.get("window-exposed", float("nan")) - start) / 1e6,
        "rss_first_frame_kib": rss_first_frame,
        "rss_idle_kib": rss_idle,
        "api": api,
    }


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--app", required=True)
    parser.add_argument("--bare", required=True)
    parser.add_argument("--probe", required=True, help="the first-frame probe library (LD_PRELOAD)")
    parser.add_argument("--runs", type=int, default=7, help="measured runs of each program (>= 7)")
    parser.add_argument("--settle", type=float, default=1.0, help="seconds after the first frame to read idle RSS")
    parser.add_argument("--timeout", type=float, default=30.0)
    args = parser.parse_args()
    if args.runs < 7:
        parser.error("--runs must be at least 7")
    probe = os.path.abspath(args.probe)
    # Each program on each renderer. The app as it starts picks its renderer itself (here, without a GPU,
    # Qt Quick's software renderer: the probe reports which, and the app's figures are compared with the
    # bare window on that one); held to OpenGL it draws through Mesa's CPU rasterizer as the bare window
    # does by default.
    programs = {
        "app": (os.path.abspath(args.app), {}),
        "app_opengl": (os.path.abspath(args.app), {"QSG_RHI_BACKEND": "opengl"}),
        "bare_software": (os.path.abspath(args.bare), {"QT_QUICK_BACKEND": "software"}),
        "bare_opengl": (os.path.abspath(args.bare), {"QSG_RHI_BACKEND": "opengl"}),
    }
    names = list(programs)

    def launch(name, home=None):
        path, extra_env = programs[name]
        return run_once(path, probe, args.settle, args.timeout, home, extra_env)

    def measure(homes):
        samples = {name: [] for name in names}
        for round_index in range(args.runs):
            # Each program takes each place in the order in turn.
            shift = round_index % len(names)
            for name in names[shift:] + names[:shift]:
                samples[name].append(launch(name, homes[name]))
        return samples

    # One discarded round warms the page cache and the system's font cache for all.
    for name in names:
        launch(name)
    # First launches: a fresh HOME every time, so nothing the program caches for itself (compiled shaders,
    # QML caches) is there.
    cold = measure({name: None for name in names})
    # Later launches: one HOME per program, kept from its discarded first launch on.
    homes = {name: make_home() for name in names}
    try:
        for name in names:
            launch(name, homes[name])
        warm = measure(homes)
    finally:
        for home in homes.values():
            shutil.rmtree(home, ignore_errors=True)

    def median(samples, name, key):
        return statistics.median(sample[key] for sample in samples[name])

    def series(samples, name, key, fmt):
        return " ".join(fmt.format(sample[key]) for sample in samples[name])

    apis = {name: sorted({sample["api"] for sample in cold[name] + warm[name]}) for name in names}
    app_api = apis["app"]
    if len(app_api) != 1 or app_api[0] not in ("software", "opengl"):
        raise RuntimeError(f"the app drew with {app_api}; expected one of software, opengl")
    app_renderer = app_api[0]
    same = f"bare_{app_renderer}"

    def ratio(samples, name, bare, key):
        return median(samples, name, key) / median(samples, bare, key)

    ff_ratio = ratio(cold, "app", same, "first_frame_ms")
    rss_ratio = ratio(cold, "app", same, "rss_idle_kib")
    lines = [
        f"runs_each: {args.runs}",
        f"idle_settle_s: {args.settle:g}",
        f"renderers: " + " ".join(f"{name}={'/'.join(apis[name])}" for name in names),
        "# First launches (fresh HOME each launch), the app against the bare window on the renderer it picks",
        f"first_frame_vs_bare_same_renderer_ratio: {ff_ratio:.2f}",
        f"idle_rss_vs_bare_same_renderer_ratio: {rss_ratio:.2f}",
        f"app_first_frame_ms_median: {median(cold, 'app', 'first_frame_ms'):.1f}",
        f"{same}_first_frame_ms_median: {median(cold, same, 'first_frame_ms'):.1f}",
        f"app_idle_rss_kib_median: {median(cold, 'app', 'rss_idle_kib'):.0f}",
        f"{same}_idle_rss_kib_median: {median(cold, same, 'rss_idle_kib'):.0f}",
        "# For reference: the app held to OpenGL against the bare window on OpenGL, and the old cross-renderer ratio",
        f"opengl_first_frame_vs_bare_same_renderer_ratio: {ratio(cold, 'app_opengl', 'bare_opengl', 'first_frame_ms'):.2f}",
        f"opengl_idle_rss_vs_bare_same_renderer_ratio: {ratio(cold, 'app_opengl', 'bare_opengl', 'rss_idle_kib'):.2f}",
        f"app_vs_bare_opengl_first_frame_ratio: {ratio(cold, 'app', 'bare_opengl', 'first_frame_ms'):.2f}",
        f"app_vs_bare_opengl_idle_rss_ratio: {ratio(cold, 'app', 'bare_opengl', 'rss_idle_kib'):.2f}",
    ]
    for name in names:
        if name not in ("app", same):
            lines += [
                f"{name}_first_frame_ms_median: {median(cold, name, 'first_frame_ms'):.1f}",
                f"{name}_idle_rss_kib_median: {median(cold, name, 'rss_idle_kib'):.0f}",
            ]
        lines += [
            f"{name}_first_frame_rss_kib_median: {median(cold, name, 'rss_first_frame_kib'):.0f}",
            f"{name}_spawn_to_qapplication_ms_median: {median(cold, name, 'to_app_object_ms'):.1f}",
            f"{name}_spawn_to_window_exposed_ms_median: {median(cold, name, 'to_exposed_ms'):.1f}",
            f"{name}_first_frame_ms_runs: {series(cold, name, 'first_frame_ms', '{:.1f}')}",
            f"{name}_idle_rss_kib_runs: {series(cold, name, 'rss_idle_kib', '{}')}",
        ]
    lines += [
        "# Later launches (HOME kept from the program's first launch: its caches in place)",
        f"warm_first_frame_vs_bare_same_renderer_ratio: {ratio(warm, 'app', same, 'first_frame_ms'):.2f}",
        f"warm_idle_rss_vs_bare_same_renderer_ratio: {ratio(warm, 'app', same, 'rss_idle_kib'):.2f}",
        f"warm_opengl_first_frame_vs_bare_same_renderer_ratio: {ratio(warm, 'app_opengl', 'bare_opengl', 'first_frame_ms'):.2f}",
        f"warm_opengl_idle_rss_vs_bare_same_renderer_ratio: {ratio(warm, 'app_opengl', 'bare_opengl', 'rss_idle_kib'):.2f}",
    ]
    for name in names:
        lines += [
            f"warm_{name}_first_frame_ms_median: {median(warm, name, 'first_frame_ms'):.1f}",
            f"warm_{name}_idle_rss_kib_median: {median(warm, name, 'rss_idle_kib'):.0f}",
            f"warm_{name}_spawn_to_window_exposed_ms_median: {median(warm, name, 'to_exposed_ms'):.1f}",
            f"warm_{name}_first_frame_ms_runs: {series(warm, name, 'first_frame_ms', '{:.1f}')}",
        ]
    lines += [
        f"first_frame_target: <= 1.5 x bare_{app_renderer} ({'met' if ff_ratio <= 1.5 else 'missed'})",
        f"idle_rss_target: <= 1.5 x bare_{app_renderer} ({'met' if rss_ratio <= 1.5 else 'missed'})",
    ]
    print("\n".join(lines))
    return 0


if __name__ == "__main__":
    sys.exit(main())
