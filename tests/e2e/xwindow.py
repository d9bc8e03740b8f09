"""Small helpers over an X display for the end-to-end test: xdotool for input and window lookup, xwd for
screenshots (decoded here: Xvfb's 32-bit TrueColor ZPixmap)."""

import struct
import subprocess
import time


def wait_until(predicate, timeout, what, interval=0.05):
    """Polls predicate until it returns a truthy value; fails with `what` after timeout seconds."""
    deadline = time.monotonic() + timeout
    while True:
        value = predicate()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"timed out after {timeout} s waiting for {what}")
        time.sleep(interval)


def xdotool(*args, check=True):
    result = subprocess.run(["xdotool", *map(str, args)], capture_output=True, text=True, timeout=20)
    if check and result.returncode != 0:
        raise AssertionError(f"xdotool {' '.join(map(str, args))} failed: {result.stderr.strip()}")
    return result.stdout


def find_window(pid, timeout):
    """The visible top-level window of process pid (by _NET_WM_PID)."""
    def search():
        out = xdotool("search", "--onlyvisible", "--pid", pid, check=False).split()
        return out[0] if out else None
    return wait_until(search, timeout, f"a visible window of process {pid}", interval=0.1)


def window_geometry(window):
    fields = dict(line.split("=", 1) for line in xdotool("getwindowgeometry", "--shell", window).split())
    return int(fields["X"]), int(fields["Y"]), int(fields["WIDTH"]), int(fields["HEIGHT"])


class Image:
    def __init__(self, width, height, rgb):
        self.width, self.height, self.rgb = width, height, rgb

    def pixel(self, x, y):
        i = (y * self.width + x) * 3
        return self.rgb[i], self.rgb[i + 1], self.rgb[i + 2]

    def count(self, predicate, x0=0, y0=0, x1=None, y1=None):
        x1 = self.width if x1 is None else x1
        y1 = self.height if y1 is None else y1
        n = 0
        for y in range(max(0, y0), min(self.height, y1)):
            row = self.rgb[y * self.width * 3:(y + 1) * self.width * 3]
            for x in range(max(0, x0), min(self.width, x1)):
                if predicate(row[x * 3], row[x * 3 + 1], row[x * 3 + 2]):
                    n += 1
        return n

    def save_ppm(self, path):
        with open(path, "wb") as out:
            out.write(b"P6\n%d %d\n255\n" % (self.width, self.height))
            out.write(self.rgb)


def capture(window):
    """Screenshot of one window as an Image (RGB)."""
    data = subprocess.run(["xwd", "-silent", "-id", str(window)], capture_output=True, check=True, timeout=20).stdout
    header = struct.unpack(">25I", data[:100])
    (header_size, _version, pixmap_format, _depth, width, height, _xoffset, byte_order, _unit, _bit_order,
     _pad, bits_per_pixel, bytes_per_line, _visual, red_mask, green_mask, blue_mask, _bits_rgb,
     _cmap_entries, ncolors) = header[:20]
    # Xvfb's TrueColor layout: 32 bits per pixel, B G R x in memory.
    layout = (pixmap_format, bits_per_pixel, byte_order, red_mask, green_mask, blue_mask)
    if layout != (2, 32, 0, 0xFF0000, 0xFF00, 0xFF):
        raise AssertionError(f"unsupported xwd image layout {layout}")
    offset = header_size + ncolors * 12
    packed = b"".join(data[offset + y * bytes_per_line: offset + y * bytes_per_line + width * 4]
                      for y in range(height))
    rgb = bytearray(width * height * 3)
    rgb[0::3], rgb[1::3], rgb[2::3] = packed[2::4], packed[1::4], packed[0::4]
    return Image(width, height, bytes(rgb))
