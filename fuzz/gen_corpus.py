#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz targets: fuzz/corpus/<target>/.

Every seed is a valid input of its kind, laid out as the harnesses read it
(fuzz/harness/*.cpp): a 16-bit little-endian control length, the control
bytes (sizes, coordinates, record fields, in the order the harness reads
them), then the stream bytes (bitmap data, tile bodies, glyph strings).

Seeds named ok-* are well-formed and must draw without a single report; the
replay test (tests/test_fuzz_regressions.cpp) checks that.  Seeds named
edge-* exercise refusals and limits.

Usage: fuzz/gen_corpus.py [output directory, default fuzz/corpus]
"""
import os
import struct
import sys


# ---------------------------------------------------------------------------
# The input layout
# ---------------------------------------------------------------------------

class Control:
    """Control bytes, written in the order the harness's Reader reads them."""

    def __init__(self):
        self.b = bytearray()

    def u8(self, v):
        self.b.append(v & 0xFF)

    def u16(self, v):
        self.b += struct.pack('<H', v & 0xFFFF)

    def u32(self, v):
        self.b += struct.pack('<I', v & 0xFFFFFFFF)

    def i32(self, v):
        self.u32(v)

    def coord(self, v):
        """Reader::coord: mode 0 is u16 % 700 - 200, mode 0xA0 any int32."""
        if -200 <= v < 500:
            self.u8(0x00)
            self.u16(v + 200)
        else:
            self.u8(0xA0)
            self.i32(v)

    def extent(self, v):
        """Reader::extent: mode 0 is u16 % 301, mode 0xA0 any int32."""
        if 0 <= v <= 300:
            self.u8(0x00)
            self.u16(v)
        else:
            self.u8(0xA0)
            self.i32(v)

    def component(self, v):
        """Reader::component: a byte, or 0xE0 and any int32."""
        if 0 <= v <= 255:
            self.u8(v)
            self.u8(0)
        else:
            self.u8(0)
            self.u8(0xE0)
            self.i32(v)

    def frame(self, w, h, pad=0, shape=0, special=0, ox=0, oy=0, origin=False, tiles=None):
        """Frame(Reader&): width, height, shape, special, origin x and y, then
        the tile map size (shape mode 7) and the tile pattern (shape 0x20)."""
        shape |= pad & 3
        if origin:
            shape |= 0x80
        self.u8(w)
        self.u8(h)
        self.u8(shape)
        self.u8(special)
        self.coord(ox)
        self.coord(oy)
        if (shape >> 2) & 7 == 7:
            self.u8(tiles[0])
            self.u8(tiles[1])
        if shape & 0x20:
            self.u8(tiles if isinstance(tiles, int) else 0)

    def full_clip(self):
        self.u8(0)

    def clip(self, l, t, r, b):
        self.u8(1)
        for v in (l, t, r, b):
            self.coord(v)


def seed(control, stream=b''):
    return struct.pack('<H', len(control.b)) + bytes(control.b) + bytes(stream)


def le16(v):
    return struct.pack('<H', v)


# ---------------------------------------------------------------------------
# Bitmaps: interleaved run-length and planar encoders
# ---------------------------------------------------------------------------

def colour(c):
    return bytes([c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF])


def interleaved_orders():
    """Every order of the interleaved codec once; returns (bytes, pixels)."""
    s = bytearray()
    n = 0

    def add(data, pixels):
        nonlocal n
        s.extend(data)
        n += pixels
    add([0x05], 5)                                   # REGULAR_BG_RUN
    add([0x23], 3)                                   # REGULAR_FG_RUN
    add([0x41, 0xA5], 8)                             # REGULAR_FGBG_IMAGE, 1 mask byte
    add([0x64] + list(colour(0x102030)), 4)          # REGULAR_COLOR_RUN
    add([0x82] + list(colour(0x112233)) + list(colour(0x445566)), 2)  # REGULAR_COLOR_IMAGE
    add([0xC2] + list(colour(0x00FF00)), 2)          # LITE_SET_FG_FG_RUN
    add([0xD1] + list(colour(0x0000FF)) + [0x3C], 8)  # LITE_SET_FG_FGBG_IMAGE
    add([0xE2] + list(colour(0x010101)) + list(colour(0x020202)), 4)  # LITE_DITHERED_RUN
    add([0xF9], 8)                                   # SPECIAL_FGBG_1
    add([0xFA], 8)                                   # SPECIAL_FGBG_2
    add([0xFD], 1)                                   # WHITE
    add([0xFE], 1)                                   # BLACK
    add([0x00, 0x02], 34)                            # REGULAR_BG_RUN, ext + 32
    add([0x20, 0x01], 33)                            # REGULAR_FG_RUN, ext + 32
    add([0x40, 0x09, 0xFF, 0x03], 10)                # REGULAR_FGBG_IMAGE, ext + 1
    add([0x60, 0x00] + list(colour(0xABCDEF)), 32)   # REGULAR_COLOR_RUN, ext + 32
    add([0x80, 0x00] + list(colour(0x778899)) * 32, 32)  # REGULAR_COLOR_IMAGE, ext + 32
    add([0xC0, 0x00] + list(colour(0x123456)), 16)   # LITE_SET_FG_FG_RUN, ext + 16
    add([0xD0, 0x02] + list(colour(0x654321)) + [0x05], 3)  # LITE_SET_FG_FGBG_IMAGE, ext + 1
    add([0xE0, 0x00] + list(colour(0x111111)) + list(colour(0x222222)), 32)  # LITE_DITHERED_RUN
    add([0xF0] + list(le16(7)), 7)                   # MEGA_MEGA_BG_RUN
    add([0xF1] + list(le16(9)), 9)                   # MEGA_MEGA_FG_RUN
    add([0xF2] + list(le16(12), ) + [0x81, 0x0F], 12)  # MEGA_MEGA_FGBG_IMAGE
    add([0xF3] + list(le16(5)) + list(colour(0x0A0B0C)), 5)  # MEGA_MEGA_COLOR_RUN
    add([0xF4] + list(le16(3)) + list(colour(1)) + list(colour(2)) + list(colour(3)), 3)
    add([0xF6] + list(le16(4)) + list(colour(0x00FFFF)), 4)  # MEGA_MEGA_SET_FG_RUN
    add([0xF7] + list(le16(8)) + list(colour(0xFF00FF)) + [0x55], 8)  # MEGA_MEGA_SET_FGBG_IMAGE
    add([0xF8] + list(le16(3)) + list(colour(0x0F0F0F)) + list(colour(0xF0F0F0)), 6)
    return bytes(s), n


def interleaved_background_runs(width):
    """Background runs across the first-row boundary (insertion rules)."""
    s = bytes([0x03, 0x03]) + bytes([width - 6]) + bytes([0x04, 0x04, 0x04])
    return s, 3 + 3 + (width - 6) + 12


def interleaved_lower_rows(width):
    """Foreground/background images and runs below the first row."""
    s = bytes([0x60, width - 32]) + colour(0x405060)      # the first row, one colour
    s += bytes([0x42, 0x5A, 0xA5])                         # 16 pixels of mask below it
    s += bytes([0x21, 0x04]) + bytes([0xF9, 0xFA])
    return s, width + 16 + 1 + 4 + 16


def plane_row_raw(values):
    """Raw segments of up to 15 bytes, no runs."""
    out = bytearray()
    for i in range(0, len(values), 15):
        chunk = values[i:i + 15]
        out.append(len(chunk) << 4)
        out.extend(chunk)
    return bytes(out)


def delta_code(d):
    """The raw byte whose delta value is d (-128 to 127)."""
    return 2 * d if d >= 0 else 2 * (-d - 1) + 1


def rle_plane(rows):
    """A run-length plane: the first row absolute, the others as deltas."""
    out = bytearray(plane_row_raw(rows[0]))
    for y in range(1, len(rows)):
        deltas = [delta_code(((rows[y][x] - rows[y - 1][x] + 128) % 256) - 128) for x in range(len(rows[y]))]
        out += plane_row_raw(deltas)
    return bytes(out)


def flat_rle_plane(width, height, value):
    """A constant plane of width 16 or 32 with the long-run codes: one raw
    byte and a run of 15, then delta rows of 0 as runs of 16 or 32."""
    assert width in (16, 32)
    first = bytes([0x1F, value]) + (bytes([0x01]) if width == 32 else b'')
    other = bytes([0x01 if width == 16 else 0x02])
    return first + other * (height - 1)


def sample_plane(width, height, seed_value):
    return [[(seed_value + 7 * x + 13 * y + (x * y) % 5) & 0xFF for x in range(width)] for y in range(height)]


def planar(width, height, header, alpha=None, flat=False):
    planes = [sample_plane(width, height, k * 50) for k in range(3)]
    out = bytearray([header])
    rle = header & 0x10
    has_alpha = not (header & 0x20)
    if not rle:
        if has_alpha:
            out += bytes([0xFF]) * (width * height)
        for p in planes:
            for row in p:
                out += bytes(row)
        return bytes(out)
    if has_alpha:
        out += flat_rle_plane(width, height, 0xFF) if flat else rle_plane(sample_plane(width, height, 200))
    for k, p in enumerate(planes):
        out += flat_rle_plane(width, height, 40 * k + 10) if flat else rle_plane(p)
    return bytes(out)


def raw_bitmap(width, height, bpp):
    return bytes((i * 7 + 3) & 0xFF for i in range(width * height * bpp))


DEPTH3, DEPTH4 = 0, 1  # indexes into kDepths


def bitmap_update_seed(depth, frame_wh, width, height, left, top, flags, data, shape=0, origin=None, extra=None):
    """One bitmapUpdate call: the rectangle is the bitmap's own size."""
    c = Control()
    c.u8(depth)
    c.u8(1)                   # byte order
    if origin:
        c.frame(*frame_wh, origin=True, ox=origin[0], oy=origin[1], shape=shape)
    else:
        c.frame(*frame_wh, shape=shape)
    c.u8(0)                   # one call
    c.u8(0)                   # dimensions: small
    c.u8(width)
    c.u8(height)
    c.coord(left)
    c.coord(top)
    c.u8(0)                   # right edge: the bitmap's width
    c.u8(0)                   # bottom edge: its height
    c.u8(24)                  # bitsPerPixel (not read)
    c.u8(flags)
    c.u8(0)
    c.u16(len(data))
    c.u8(0)                   # stated length: all of it
    if extra:
        extra(c)
    return seed(c, data)


def bitmap_update_seeds():
    s = {}
    data, n = interleaved_orders()
    w = 32
    h = (n + w - 1) // w
    s['ok-interleaved-every-order'] = bitmap_update_seed(DEPTH3, (64, 48), w, h, 3, 5, 1, data)
    data, n = interleaved_background_runs(24)
    s['ok-interleaved-background-runs'] = bitmap_update_seed(DEPTH3, (64, 48), 24, 2, 0, 0, 1, data)
    data, n = interleaved_lower_rows(40)
    s['ok-interleaved-lower-rows'] = bitmap_update_seed(DEPTH3, (96, 64), 40, 3, 50, 40, 1, data)
    s['ok-interleaved-origin-clipped'] = bitmap_update_seed(
        DEPTH3, (64, 48), 32, 4, 90, 60, 1, interleaved_lower_rows(32)[0], origin=(100, 50))
    s['ok-uncompressed-24'] = bitmap_update_seed(DEPTH3, (64, 48), 16, 8, 4, 4, 0, raw_bitmap(16, 8, 3))
    s['ok-uncompressed-32'] = bitmap_update_seed(DEPTH4, (64, 48), 16, 8, 40, 30, 0, raw_bitmap(16, 8, 4))
    s['ok-uncompressed-clipped-left-top'] = bitmap_update_seed(DEPTH3, (64, 48), 20, 10, -5, -3, 0,
                                                               raw_bitmap(20, 10, 3))
    s['ok-planar-raw'] = bitmap_update_seed(DEPTH4, (64, 48), 12, 5, 1, 1, 1, planar(12, 5, 0x20))
    s['ok-planar-raw-alpha'] = bitmap_update_seed(DEPTH4, (64, 48), 12, 5, 1, 1, 1, planar(12, 5, 0x00))
    s['ok-planar-rle'] = bitmap_update_seed(DEPTH4, (64, 48), 20, 6, 30, 20, 1, planar(20, 6, 0x30))
    s['ok-planar-rle-alpha'] = bitmap_update_seed(DEPTH4, (64, 48), 20, 6, 30, 20, 1, planar(20, 6, 0x10))
    s['ok-planar-rle-long-runs'] = bitmap_update_seed(DEPTH4, (64, 48), 32, 4, 0, 0, 1,
                                                      planar(32, 4, 0x10, flat=True))
    # Refusals and limits.
    s['edge-unknown-header'] = bitmap_update_seed(DEPTH3, (64, 48), 8, 2, 0, 0, 1, bytes([0x03, 0xA5, 0x05]))
    s['edge-overrun'] = bitmap_update_seed(DEPTH3, (64, 48), 8, 2, 0, 0, 1, bytes([0xF3, 0x00, 0x01, 1, 2, 3]))
    s['edge-planar-short'] = bitmap_update_seed(DEPTH4, (64, 48), 12, 5, 1, 1, 1, planar(12, 5, 0x20)[:-1])
    s['edge-uncompressed-short'] = bitmap_update_seed(DEPTH3, (64, 48), 16, 8, 4, 4, 0, raw_bitmap(16, 8, 3)[:-1])
    s['edge-tiles-outside-map'] = bitmap_update_seed(DEPTH3, (64, 48), 16, 8, 4, 4, 0, raw_bitmap(16, 8, 3),
                                                     shape=5 << 2)
    # 257 x 256 pixels: refused before decoding.
    c = Control()
    c.u8(DEPTH3); c.u8(0); c.frame(64, 48); c.u8(0)
    c.u8(3); c.u8(1)                                   # dimensions: kBigDimensions[1]
    c.coord(0); c.coord(0); c.u8(0); c.u8(0); c.u8(24); c.u8(1); c.u8(0); c.u16(2); c.u8(0)
    s['edge-too-many-pixels'] = seed(c, bytes([0xF0, 0xFF]))
    return s


def decode_bitmap_seed(depth, width, height, compressed, data, length_mode=0, stated=0):
    c = Control()
    c.u8(depth)
    c.u8(0)
    c.u8(0)          # dimensions: small
    c.u8(width)
    c.u8(height)
    c.u8(compressed)
    c.u8(length_mode)
    if length_mode == 7:
        c.i32(stated)
    return seed(c, data)


def decode_bitmap_seeds():
    s = {}
    data, n = interleaved_orders()
    s['ok-interleaved-every-order'] = decode_bitmap_seed(DEPTH3, 32, (n + 31) // 32, 1, data)
    data, n = interleaved_lower_rows(40)
    s['ok-interleaved-lower-rows'] = decode_bitmap_seed(DEPTH3, 40, 3, 1, data)
    s['ok-uncompressed-24'] = decode_bitmap_seed(DEPTH3, 2, 2, 0, raw_bitmap(2, 2, 3))
    s['ok-uncompressed-32'] = decode_bitmap_seed(DEPTH4, 9, 3, 0, raw_bitmap(9, 3, 4))
    s['ok-planar-raw'] = decode_bitmap_seed(DEPTH4, 17, 3, 1, planar(17, 3, 0x20))
    s['ok-planar-raw-alpha'] = decode_bitmap_seed(DEPTH4, 17, 3, 1, planar(17, 3, 0x00))
    s['ok-planar-rle'] = decode_bitmap_seed(DEPTH4, 19, 4, 1, planar(19, 4, 0x30))
    s['ok-planar-rle-alpha'] = decode_bitmap_seed(DEPTH4, 16, 4, 1, planar(16, 4, 0x10, flat=True))
    s['edge-planar-refused-header'] = decode_bitmap_seed(DEPTH4, 4, 4, 1, bytes([0x08]) + bytes(48))
    s['edge-planar-row-overrun'] = decode_bitmap_seed(DEPTH4, 4, 2, 1, bytes([0x30, 0x50, 1, 2, 3, 4, 5]))
    s['edge-depth-2'] = decode_bitmap_seed(7, 4, 4, 1, bytes([0x84]) + raw_bitmap(4, 1, 2))
    s['edge-negative-length'] = decode_bitmap_seed(DEPTH3, 4, 4, 1, bytes([0xF0, 0x10, 0x00]), length_mode=7,
                                                   stated=-3)
    return s


# ---------------------------------------------------------------------------
# Orders
# ---------------------------------------------------------------------------

def rect_orders_seeds():
    s = {}

    def start(frame=(96, 64), calls=1, **kw):
        c = Control()
        c.u8(0)
        c.frame(*frame, **kw)
        c.u8(calls - 1)
        return c

    def dst(c, l, t, w, h, rop):
        c.u8(0); c.coord(l); c.coord(t); c.extent(w); c.extent(h); c.component(rop)

    def scr(c, l, t, w, h, rop, sx, sy):
        c.u8(1); c.coord(l); c.coord(t); c.extent(w); c.extent(h); c.component(rop); c.coord(sx); c.coord(sy)

    def mem(c, l, t, w, h, rop, sx, sy, bw, bh):
        c.u8(2); c.i32(0); c.coord(l); c.coord(t); c.extent(w); c.extent(h); c.component(rop)
        c.coord(sx); c.coord(sy); c.i32(0); c.u8(bw); c.u8(bh); c.u32(0x12345678); c.u8(0)

    def opaque(c, l, t, w, h, r, g, b):
        c.u8(3); c.coord(l); c.coord(t); c.extent(w); c.extent(h); c.component(r); c.component(g); c.component(b)

    c = start(calls=4)
    c.full_clip(); dst(c, 3, 4, 40, 30, 0x55)
    c.full_clip(); dst(c, 50, 10, 40, 30, 0xAA)
    c.clip(10, 10, 60, 50); dst(c, 0, 0, 96, 64, 0x00)
    c.full_clip(); dst(c, 5, 5, 10, 10, 0xFF)
    s['ok-dstblt'] = seed(c)
    c = start(calls=4)
    c.full_clip(); scr(c, 10, 10, 40, 30, 0xCC, 11, 10)
    c.full_clip(); scr(c, 10, 10, 40, 30, 0x66, 9, 12)
    c.full_clip(); scr(c, 20, 20, 30, 20, 0xCC, 20, 19)
    c.clip(15, 12, 70, 60); scr(c, 5, 7, 60, 40, 0x88, 30, 20)
    s['ok-scrblt-overlaps'] = seed(c)
    c = start(calls=3)
    c.full_clip(); mem(c, 10, 10, 32, 16, 0xCC, 0, 0, 64, 40)
    c.full_clip(); mem(c, 60, 30, 20, 20, 0x66, 10, 5, 40, 30)
    c.clip(0, 0, 30, 30); mem(c, 20, 20, 32, 32, 0xEE, 3, 3, 40, 40)
    s['ok-memblt'] = seed(c)
    c = start(calls=2, origin=True, ox=100, oy=50)
    c.full_clip(); opaque(c, 100, 50, 20, 20, 0x12, 0x34, 0x56)
    c.clip(0, 0, 95, 63); opaque(c, 150, 80, 50, 40, 255, 0, 255)
    s['ok-opaquerect-origin'] = seed(c)
    c = start(calls=3)
    c.full_clip(); scr(c, 60, 40, 40, 30, 0xCC, 0, 0)
    c.full_clip(); mem(c, 0, 0, 10, 10, 0xCC, 60, 0, 64, 40)
    c.full_clip(); dst(c, 0, 0, 0x7FFFFFFF, 0x7FFFFFFF, 0x55)
    s['edge-outside'] = seed(c)
    c = start(calls=2, shape=7 << 2, tiles=(1, 1))
    c.full_clip(); opaque(c, 40, 40, 10, 10, 1, 2, 3)
    c.clip(-1000, -1000, 1000, 1000); dst(c, -50, -50, 100, 100, 0x55)
    s['edge-small-tile-map'] = seed(c)
    return s


STYLES = {0: 0, 1: 1, 2: 2, 3: 3, 0x81: 4, 0x85: 5, 0x80: 6, 0x83: 7}


def pat_blt_seeds():
    s = {}

    def order(c, l, t, w, h, rop, style, brush=bytes(8), org=(0, 0), back=(255, 0, 0), fore=(0, 0, 255),
              clip=None, null_data=False):
        if clip:
            c.clip(*clip)
        else:
            c.full_clip()
        c.coord(l); c.coord(t); c.extent(w); c.extent(h); c.component(rop)
        for v in back + fore:
            c.component(v)
        c.coord(org[0]); c.coord(org[1])
        c.u8(STYLES[style]); c.u8(0)
        for b in brush:
            c.u8(b)
        c.u8(0)                                        # hatch number as given
        c.u8(15 if null_data else 0)

    def start(calls):
        c = Control()
        c.u8(0)
        c.frame(80, 60, pad=1)
        c.u8(calls - 1)
        return c

    c = start(4)
    order(c, 0, 0, 40, 30, 0xF0, 0)
    order(c, 40, 0, 40, 30, 0x5A, 0)
    order(c, 0, 30, 40, 30, 0xF0, 2, brush=bytes([5, 0, 0, 0, 0, 0, 0, 0]), org=(3, 1))
    order(c, 40, 30, 40, 30, 0xF0, 3, brush=bytes([0xAA, 0x55] * 4), org=(-3, 13))
    s['ok-solid-hatch-pattern'] = seed(c)
    c = start(2)
    order(c, 5, 5, 27, 19, 0xF0, 0x81, org=(2, 7))
    order(c, 33, 21, 11, 30, 0xF0, 0x85)
    stream = bytes([0x18, 0x3C, 0x7E, 0xFF, 0xFF, 0x7E, 0x3C, 0x18]) + bytes(range(256))
    s['ok-cached-brushes'] = seed(c, stream)
    c = start(4)
    order(c, 0, 0, 10, 10, 0xF0, 1)
    order(c, 0, 0, 10, 10, 0xF0, 0x83)
    order(c, 0, 0, 10, 10, 0xF0, 0x81, null_data=True)
    order(c, 0, 0, 10, 10, 0xF0, 2, brush=bytes([6, 0, 0, 0, 0, 0, 0, 0]))
    s['edge-refused-styles'] = seed(c)
    c = start(2)
    order(c, -10, -10, 200, 200, 0xF0, 3, brush=bytes(range(8)), org=(-5, -6), clip=(-20, -20, 300, 300))
    order(c, 70, 50, 20, 20, 0xF0, 0)
    s['edge-outside-and-negative-phase'] = seed(c)
    return s


def draw_line_seeds():
    s = {}
    lines = [
        (5, 5, 5, 5), (5, 5, 6, 6), (3, 4, 3, 40), (3, 40, 3, 4), (4, 3, 70, 3), (70, 3, 4, 3),
        (0, 0, 79, 59), (79, 0, 0, 59), (10, 50, 60, 5), (-30, -20, 100, 80), (40, -100, 41, 200),
        (-1000, 30, 1000, 31), (20, 20, 23, 60),
    ]
    c = Control()
    c.u8(0)
    c.frame(80, 60)
    c.u8(5)                                           # six lines
    for (x0, y0, x1, y1) in lines[:6]:
        c.full_clip()
        c.coord(x0); c.coord(y0); c.u8(1); c.coord(x1); c.coord(y1)
        c.component(0xCC - 0xC0)                      # rop 12 (copy)
        for v in (255, 128, 0):
            c.component(v)
    s['ok-fast-paths'] = seed(c)
    c = Control()
    c.u8(0)
    c.frame(80, 60, pad=2)
    c.u8(5)
    for (x0, y0, x1, y1) in lines[6:12]:
        c.clip(5, 5, 70, 50)
        c.coord(x0); c.coord(y0); c.u8(1); c.coord(x1); c.coord(y1)
        c.component(6)                                # xor
        for v in (1, 2, 3):
            c.component(v)
    s['ok-sloped-clipped'] = seed(c)
    c = Control()
    c.u8(0)
    c.frame(80, 60)
    c.u8(2)
    for (x0, y0, x1, y1, clip) in [(0, 0, 200, 100, (0, 0, 500, 500)), (-0x7FFFFFFF, 5, 0x7FFFFFFF, 6, None),
                                   (10, 10, 10, 90, (0, 0, 79, 200))]:
        if clip:
            c.clip(*clip)
        else:
            c.full_clip()
        c.coord(x0); c.coord(y0); c.u8(1); c.coord(x1); c.coord(y1)
        c.component(12)
        for v in (9, 9, 9):
            c.component(v)
    s['edge-clip-beyond-image'] = seed(c)
    return s


# ---------------------------------------------------------------------------
# Text
# ---------------------------------------------------------------------------

def glyph(x, y, cx, cy, rows):
    """A cache entry's glyph: header and bits (rows of (cx + 7) / 8 bytes)."""
    return struct.pack('<hhHH', x, y, cx, cy) + bytes(rows)


def glyph_cache(c, size, entries):
    """GlyphCache(Reader&, Reader&): mode, size low, size high, count; the
    entries (header, bits, padding to the entry size) come from the stream."""
    c.u8(0)
    c.u8(size & 0xFF)
    c.u8(size >> 8)
    c.u8(len(entries))
    out = bytearray()
    for e in entries:
        out += e + bytes(size + 8 - len(e))
    return bytes(out)


def sample_glyphs(size=32):
    return [
        glyph(0, -8, 8, 8, [0x18, 0x24, 0x42, 0x7E, 0x42, 0x42, 0x42, 0x00]),
        glyph(1, -10, 9, 10, [0xFF, 0x80] * 10),
        glyph(-2, 0, 12, 3, [0xF0, 0xF0, 0x0F, 0x00, 0xAA, 0x50]),
        glyph(0, 0, 1, 1, [0x80]),
        glyph(0, -4, 16, 2, [0xFF, 0xFF, 0x81, 0x81]),
    ]


def text_common(c, text, opaque_colour, bk, op_mode, op, x, y):
    for v in text + opaque_colour:
        c.component(v)
    c.coord(bk[0]); c.coord(bk[1]); c.u8(1); c.coord(bk[2]); c.coord(bk[3])
    c.u8(op_mode)
    if op_mode == 1:
        c.coord(op[0]); c.coord(op[1]); c.u8(1); c.coord(op[2]); c.coord(op[3])
        c.u8(op[4])                                    # opTop flags
    elif op_mode >= 2:
        c.coord(op[0]); c.coord(op[1]); c.u8(1); c.coord(op[2]); c.coord(op[3])
    for v in (x, y):
        if v == -32768:
            c.u8(0)
        else:
            c.u8(1)
            c.coord(v)


def glyph_index_order(c, string, fl_accel=0x20, char_inc=0, redundant=0, bk=(4, 4, 90, 30), op_mode=0,
                      op=(0, 0, 0, 0), x=10, y=20, explicit=1, clip=None):
    c.i32(7)                                          # cacheId
    c.u8(fl_accel)
    if char_inc:
        c.u8(1); c.coord(char_inc)
    else:
        c.u8(0)
    c.u8(redundant)
    text_common(c, (255, 255, 255), (0, 0, 128), bk, op_mode, op, x, y)
    c.u8(len(string)); c.u8(0)                        # cbData
    c.u8(explicit)
    if clip:
        c.clip(*clip)
    else:
        c.full_clip()


def glyph_index_seeds():
    s = {}
    entries = sample_glyphs()

    def start(calls):
        c = Control()
        c.u8(1)
        c.frame(100, 40, pad=1)
        cache = glyph_cache(c, 32, entries)
        c.u8(calls - 1)
        return c, cache

    c, cache = start(2)
    s1 = bytes([0, 1, 2, 3, 4, 0, 1])
    glyph_index_order(c, s1, op_mode=2, op=(4, 4, 90, 30))
    s2 = bytes([4, 3, 2])
    glyph_index_order(c, s2, char_inc=8, op_mode=2, op=(0, 0, 0, 0), redundant=1, explicit=1)
    s['ok-advance'] = seed(c, cache + s1 + s2)

    c, cache = start(1)
    s1 = bytes([0, 0x0A, 1, 0x81, 0x0C, 0x00, 2, 0x05, 3, 0x7F, 4])    # deltas, one 16-bit
    glyph_index_order(c, s1, fl_accel=0, op_mode=1, op=(0, 0, 0, 0, 0x0F), explicit=0)
    s['ok-deltas-fastindex-flags'] = seed(c, cache + s1)

    c, cache = start(3)
    s1 = bytes([0, 1, 2, 0xFF, 3, 3])                 # store the three glyphs in slot 3
    glyph_index_order(c, s1)
    s2 = bytes([0xFE, 3, 4, 0xFE, 3])                 # use slot 3 twice
    glyph_index_order(c, s2, y=30)
    s3 = bytes([1, 0x02, 2, 0x02, 0xFF, 9, 4, 0xFE, 9, 0x05])  # delta mode: a fragment with a delta
    glyph_index_order(c, s3, fl_accel=0, x=40, y=-32768)
    s['ok-fragments'] = seed(c, cache + s1 + s2 + s3)

    c, cache = start(1)
    s1 = bytes([0, 1, 2])
    glyph_index_order(c, s1, fl_accel=0x24, bk=(10, 0, 40, 40), x=20, y=2)   # vertical text
    s['ok-vertical'] = seed(c, cache + s1)

    c, cache = start(3)
    s1 = bytes([9, 200, 0])                           # indices beyond the cache
    glyph_index_order(c, s1)
    s2 = bytes([0, 0xFF, 3])                          # store command cut short
    glyph_index_order(c, s2)
    s3 = bytes([0, 0xFE])                             # use command without its slot
    glyph_index_order(c, s3, op_mode=1, op=(0, 0, 0, 0, 0x02))
    s['edge-refusals'] = seed(c, cache + s1 + s2 + s3)

    c, cache = start(1)
    s1 = bytes([0, 1, 2, 3]) * 8
    glyph_index_order(c, s1, bk=(-50, -50, 300, 300), clip=(-100, -100, 500, 500), x=-5, y=-5)
    s['edge-clip-beyond-image'] = seed(c, cache + s1)
    return s


def fast_glyph_seeds():
    s = {}
    entries = sample_glyphs()

    def start(calls):
        c = Control()
        c.u8(0)
        c.frame(64, 40)
        cache = glyph_cache(c, 32, entries)
        c.u8(calls - 1)
        return c, cache

    def order(c, index, bk=(2, 2, 60, 30), op_mode=0, op=(0, 0, 0, 0), x=10, y=20, clip=None):
        c.i32(0); c.i32(0); c.i32(0)
        text_common(c, (200, 100, 50), (1, 2, 3), bk, op_mode, op, x, y)
        c.i32(1)
        c.u8(index)
        if clip:
            c.clip(*clip)
        else:
            c.full_clip()

    c, cache = start(4)
    order(c, 0)
    order(c, 1, op_mode=1, op=(5, 0, 40, 0, 0x0D), x=30)
    order(c, 2, op_mode=2, op=(3, 3, 50, 35), x=-32768, y=-32768)
    order(c, 4, clip=(0, 0, 20, 20), x=12, y=14)
    s['ok-glyphs'] = seed(c, cache)
    c, cache = start(3)
    order(c, 5)                                       # index equal to the count
    order(c, 0, op_mode=1, op=(0, 0, 0, 0, 0x08))     # flags without 0x01
    order(c, 3, bk=(10, 10, 5, 5))                    # empty background: no glyph
    s['edge-refusals'] = seed(c, cache)
    return s


# ---------------------------------------------------------------------------
# RFB
# ---------------------------------------------------------------------------

def run_length(n):
    """ZRLE run length n (1 + sum of the bytes)."""
    n -= 1
    out = bytearray()
    while n >= 255:
        out.append(255)
        n -= 255
    out.append(n)
    return bytes(out)


def zrle_tile_body(sub, w, h, k):
    if sub == 0:
        return bytes((i * 5 + k) & 0xFF for i in range(w * h * 3))
    if sub == 1:
        return colour(0x102030 + k)
    if 17 <= sub <= 127:
        return bytes(3)
    if 2 <= sub <= 16:
        bits = 1 if sub <= 2 else 2 if sub <= 4 else 4
        per_row = (w * bits + 7) // 8
        palette = b''.join(colour(0x010101 * (i + 1) + k) for i in range(sub))
        idx = bytes(((i * 0x5B + k) & 0xFF) for i in range(per_row * h))
        if bits == 4 and sub < 16:
            idx = bytes(((b >> 4) % sub) << 4 | ((b & 15) % sub) for b in idx)
        if bits == 2 and sub == 3:
            idx = bytes(sum((((b >> s) & 3) % 3) << s for s in (0, 2, 4, 6)) for b in idx)
        return palette + idx
    if sub == 128:
        total = w * h
        out = bytearray()
        while total > 0:
            n = min(total, 1 + (len(out) * 37 + k) % 300)
            out += colour(0x404040 + len(out)) + run_length(n)
            total -= n
        return bytes(out)
    size = sub - 128
    out = bytearray(b''.join(colour(0x0A0B0C * (i + 1)) for i in range(size)))
    total = w * h
    i = 0
    while total > 0:
        if i % 3 == 0:
            out.append(i % size)
            total -= 1
        else:
            n = min(total, 1 + (i * 53) % 280)
            out.append(128 + i % size)
            out += run_length(n)
            total -= n
        i += 1
    return bytes(out)


def zrle_seed(frame, rect, tile, subs, byte_order=1, tamper=None):
    """Tiles of a rectangle walked as a client walks them."""
    c = Control()
    c.u8(byte_order)
    c.frame(*frame)
    mode = 2 if tile == 16 else 0
    c.u8(mode)
    c.coord(rect[0]); c.coord(rect[1]); c.u8(rect[2]); c.u8(rect[3])
    body = bytearray()
    k = 0
    for ty in range(0, rect[3], tile):
        for tx in range(0, rect[2], tile):
            w = min(tile, rect[2] - tx)
            h = min(tile, rect[3] - ty)
            sub = subs[k % len(subs)]
            c.u8(sub)
            body += zrle_tile_body(sub, w, h, k)
            k += 1
    if tamper:
        body = tamper(body)
    return seed(c, body)


def zrle_tiles_seeds():
    s = {}
    s['ok-zrle-direct-tiles'] = zrle_seed((200, 150), (3, 2, 80, 70), 64, [1, 128, 0, 1])
    s['ok-zrle-palette-tiles'] = zrle_seed((200, 150), (3, 2, 136, 68), 64, [2, 3, 4, 5, 16, 7])
    s['ok-zrle-palette-runs'] = zrle_seed((200, 150), (3, 2, 192, 128), 64, [130, 255, 140, 129, 200, 131])
    s['ok-trle-small-tiles'] = zrle_seed((80, 60), (10, 5, 56, 40), 16, [1, 0, 128, 2, 135, 4, 3, 16, 129])
    s['ok-byte-order-0'] = zrle_seed((64, 64), (0, 0, 64, 64), 16, [0, 128, 131], byte_order=0)
    s['ok-partial-tiles'] = zrle_seed((100, 100), (1, 1, 70, 67), 64, [2, 130, 0, 128])
    s['edge-short-body'] = zrle_seed((64, 64), (0, 0, 20, 20), 64, [0], tamper=lambda b: b[:-1])
    s['edge-outside-image'] = zrle_seed((64, 64), (10, 10, 64, 64), 64, [1])
    s['edge-palette-17'] = zrle_seed((64, 64), (0, 0, 16, 16), 16, [17])
    s['edge-run-too-long'] = zrle_seed((64, 64), (0, 0, 4, 2), 16, [128],
                                       tamper=lambda b: bytes([1, 2, 3, 8]))
    return s


def hextile_rect(c, body, rect, tiles):
    c.coord(rect[0]); c.coord(rect[1])
    c.u8(0); c.u8(rect[2]); c.u8(0); c.u8(rect[3])
    k = 0
    for ty in range(0, rect[3], 16):
        for tx in range(0, rect[2], 16):
            w = min(16, rect[2] - tx)
            h = min(16, rect[3] - ty)
            body += tiles(k, w, h)
            k += 1


def hextile_tile(k, w, h):
    kind = k % 7
    px = lambda v: struct.pack('<I', v)
    if kind == 0:
        return bytes([1]) + bytes((i * 3 + k) & 0xFF for i in range(w * h * 4))
    if kind == 1:
        return bytes([2]) + px(0x00112233)
    if kind == 2:
        return bytes([0])
    if kind == 3:
        return bytes([2 | 4 | 8, ]) + px(0x000000FF) + px(0x00FF0000) + bytes([2, 0x00, 0x11, 0xF0, 0x00])
    if kind == 4:
        return bytes([8 | 16, 3]) + px(0x00ABCDEF) + bytes([0x00, 0x33]) + px(0x00010203) + bytes([0x44, 0x21]) \
            + px(0x00FFFFFF) + bytes([0xF0, 0x00])
    if kind == 5:
        return bytes([4 | 8, ]) + px(0x0000FF00) + bytes([1, 0x12, 0x34])
    return bytes([1 | 2 | 4 | 8]) + bytes((i * 11) & 0xFF for i in range(w * h * 4))


def hextile_seeds():
    s = {}
    c = Control()
    c.u8(1)
    c.frame(120, 80, pad=1)
    c.u8(1)                                           # two rectangles
    body = bytearray()
    hextile_rect(c, body, (0, 0, 40, 20), hextile_tile)
    hextile_rect(c, body, (50, 30, 64, 48), hextile_tile)
    s['ok-every-tile-kind'] = seed(c, body)
    c = Control()
    c.u8(0)
    c.frame(64, 64)
    c.u8(0)
    body = bytearray()
    hextile_rect(c, body, (3, 3, 17, 33), lambda k, w, h: hextile_tile(k + 3, w, h))
    s['ok-byte-order-0'] = seed(c, body)
    c = Control()
    c.u8(1)
    c.frame(64, 64)
    c.u8(2)
    body = bytearray()
    hextile_rect(c, body, (0, 0, 16, 16), lambda k, w, h: bytes([8, 0]))        # count 0
    s['edge-count-0'] = seed(c, body)
    c = Control()
    c.u8(1)
    c.frame(64, 64)
    c.u8(0)
    body = bytearray()
    hextile_rect(c, body, (0, 0, 48, 16), lambda k, w, h: hextile_tile(0, w, h))
    s['edge-short-read'] = seed(c, bytes(body[:-5]))
    c = Control()
    c.u8(1)
    c.frame(64, 64)
    c.u8(0)
    body = bytearray()
    hextile_rect(c, body, (60, 60, 16, 16), hextile_tile)
    s['edge-outside-image'] = seed(c, body)
    return s


# ---------------------------------------------------------------------------
# Primitives
# ---------------------------------------------------------------------------

def primitives_seeds():
    s = {}

    def rect(c, l, t, w, h):
        c.coord(l); c.coord(t)
        for v in (w, h):
            if v < 70:
                c.u8(0); c.u8(v)
            else:
                c.u8(1); c.extent(v)

    c = Control()
    c.u8(1)
    c.frame(90, 70, pad=1)
    c.u8(7)                                           # eight calls
    stream = bytearray()
    c.u8(0); rect(c, 0, 0, 90, 70); c.u8(0); c.u32(0x00102030)               # fillBufferRect
    c.u8(1); c.coord(82); c.coord(54); c.u8(0); c.u32(0x00FFFFFF)            # drawChar8x16 at the edge
    stream += bytes([0x81, 0x42, 0x24, 0x18] * 4)
    c.u8(2); c.coord(0); c.coord(31); c.u8(0); c.u8(90); c.u8(3); c.u32(7)   # hLine, no map
    c.u8(3); c.coord(30); c.coord(2); c.u8(0); c.u8(60); c.u8(0); c.u32(9)   # vLine
    c.u8(4); rect(c, 10, 10, 20, 5)                                          # putPixels
    stream += bytes((i * 9) & 0xFF for i in range(20 * 5 * 4))
    c.u8(5); rect(c, 0, 0, 60, 40); c.coord(16); c.coord(16)                 # copyRect down-right
    c.u8(5); rect(c, 20, 20, 60, 40); c.coord(0); c.coord(0)                 # copyRect up-left
    c.u8(6); c.u8(16); c.u8(2); c.u8(1); c.u8(4)                             # importImage32
    stream += bytes((i * 5) & 0xFF for i in range(((2 - 1) * 20 + 16) * 4))
    s['ok-every-primitive'] = seed(c, stream)

    c = Control()
    c.u8(0)
    c.frame(64, 48)
    c.u8(1)
    c.u8(6); c.u8(32); c.u8(10); c.u8(0)                                     # importImage32, 32 x 10
    c.u8(4); rect(c, 30, 20, 34, 28)
    s['ok-import-and-put'] = seed(c, bytes(range(256)) * 15)

    c = Control()
    c.u8(1)
    c.frame(64, 48)
    c.u8(6)
    c.u8(0); rect(c, -1, 0, 10, 10); c.u8(0); c.u32(1)
    c.u8(0); c.coord(0); c.coord(0); c.u8(1); c.extent(65); c.u8(0); c.u8(10); c.u8(0); c.u32(1)
    c.u8(1); c.coord(57); c.coord(0); c.u8(0); c.u32(1)
    c.u8(2); c.coord(0); c.coord(0); c.u8(0); c.u8(0); c.u8(0); c.u32(1)    # length 0
    c.u8(3); c.coord(63); c.coord(40); c.u8(0); c.u8(9); c.u8(0); c.u32(1)
    c.u8(5); rect(c, 0, 0, 0, 10); c.coord(0); c.coord(0)
    c.u8(5); rect(c, 0, 0, 10, 10); c.coord(60); c.coord(0)
    s['edge-refusals'] = seed(c, bytes(16))
    return s


# ---------------------------------------------------------------------------

GENERATORS = {
    'bitmap_update': bitmap_update_seeds,
    'decode_bitmap': decode_bitmap_seeds,
    'rect_orders': rect_orders_seeds,
    'pat_blt': pat_blt_seeds,
    'draw_line': draw_line_seeds,
    'glyph_index': glyph_index_seeds,
    'fast_glyph': fast_glyph_seeds,
    'zrle_tiles': zrle_tiles_seeds,
    'hextile': hextile_seeds,
    'primitives': primitives_seeds,
}


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, 'corpus')
    for target, generate in GENERATORS.items():
        directory = os.path.join(out, target)
        os.makedirs(directory, exist_ok=True)
        for name in os.listdir(directory):
            if name.startswith(('ok-', 'edge-')):
                os.remove(os.path.join(directory, name))
        for name, data in sorted(generate().items()):
            with open(os.path.join(directory, name), 'wb') as f:
                f.write(data)
        print(f'{target}: {len(os.listdir(directory))} seeds')


if __name__ == '__main__':
    main()
