// Procedural pictures.  Everything is computed from coordinates and a small
// integer hash, so the demo needs no files and draws the same every run.
#include "pictures.h"

#include <algorithm>
#include <cmath>

namespace demo {
namespace {

uint32_t hash(int x, int y, uint32_t seed = 0) {
    uint32_t h = uint32_t(x) * 374761393u + uint32_t(y) * 668265263u + seed * 2246822519u;
    h = (h ^ (h >> 13)) * 1274126177u;
    return h ^ (h >> 16);
}

double unit(int x, int y, uint32_t seed) { return (hash(x, y, seed) & 0xFFFF) / 65535.0; }

// Smooth value noise in [0, 1] with features about `scale` pixels apart.
double noise(double x, double y, double scale, uint32_t seed) {
    const double fx = x / scale, fy = y / scale;
    const int ix = int(std::floor(fx)), iy = int(std::floor(fy));
    double tx = fx - ix, ty = fy - iy;
    tx = tx * tx * (3 - 2 * tx);
    ty = ty * ty * (3 - 2 * ty);
    const double a = unit(ix, iy, seed), b = unit(ix + 1, iy, seed), c = unit(ix, iy + 1, seed),
                 d = unit(ix + 1, iy + 1, seed);
    return (a * (1 - tx) + b * tx) * (1 - ty) + (c * (1 - tx) + d * tx) * ty;
}

int channel(uint32_t c, int shift) { return int((c >> shift) & 0xFF); }

uint32_t scale(uint32_t c, double f) {
    auto s = [&](int v) { return std::clamp(int(v * f), 0, 255); };
    return rgb(s(channel(c, 16)), s(channel(c, 8)), s(channel(c, 0)));
}

uint32_t hsv(double h, double s, double v) {
    h = std::fmod(h, 1.0) * 6;
    const int i = int(h);
    const double f = h - i, p = v * (1 - s), q = v * (1 - s * f), t = v * (1 - s * (1 - f));
    double r, g, b;
    switch (i % 6) {
        case 0: r = v, g = t, b = p; break;
        case 1: r = q, g = v, b = p; break;
        case 2: r = p, g = v, b = t; break;
        case 3: r = p, g = q, b = v; break;
        case 4: r = t, g = p, b = v; break;
        default: r = v, g = p, b = q; break;
    }
    return rgb(int(r * 255 + 0.5), int(g * 255 + 0.5), int(b * 255 + 0.5));
}

void fill(Picture &p, int x0, int y0, int x1, int y1, uint32_t c) {  // x1, y1 exclusive
    for (int y = std::max(0, y0); y < std::min(p.height, y1); ++y)
        for (int x = std::max(0, x0); x < std::min(p.width, x1); ++x) p.at(x, y) = c;
}

void frame(Picture &p, int x0, int y0, int x1, int y1, uint32_t c) {
    fill(p, x0, y0, x1, y0 + 1, c);
    fill(p, x0, y1 - 1, x1, y1, c);
    fill(p, x0, y0, x0 + 1, y1, c);
    fill(p, x1 - 1, y0, x1, y1, c);
}

void rect(Mask &m, int x0, int y0, int x1, int y1) {  // inclusive
    for (int y = y0; y <= y1; ++y)
        for (int x = x0; x <= x1; ++x) m.set(x, y);
}

void outlineRect(Mask &m, int x0, int y0, int x1, int y1) {
    for (int x = x0; x <= x1; ++x) m.set(x, y0), m.set(x, y1);
    for (int y = y0; y <= y1; ++y) m.set(x0, y), m.set(x1, y);
}

void line(Mask &m, int x0, int y0, int x1, int y1) {
    const int steps = std::max(std::abs(x1 - x0), std::abs(y1 - y0));
    for (int i = 0; i <= steps; ++i)
        m.set(x0 + (x1 - x0) * i / std::max(steps, 1), y0 + (y1 - y0) * i / std::max(steps, 1));
}

}  // namespace

uint32_t mix(uint32_t a, uint32_t b, double t) {
    auto m = [&](int shift) { return int(channel(a, shift) + (channel(b, shift) - channel(a, shift)) * t + 0.5); };
    return rgb(m(16), m(8), m(0));
}

void drawArtText(Picture &picture, int x, int baseline, const char *text, uint32_t colour) {
    for (const char *c = text; *c; ++c) {
        const Mask art = characterArt(*c);
        for (int y = 0; y < art.height; ++y)
            for (int i = 0; i < art.width; ++i)
                if (art.at(i, y) && x + i >= 0 && x + i < picture.width && baseline - 7 + y >= 0 &&
                    baseline - 7 + y < picture.height)
                    picture.at(x + i, baseline - 7 + y) = colour;
        x += art.width + 1;
    }
}

// ---------------------------------------------------------------------------
// Wallpaper: a sunset over a lake, in the patterns run-length bitmap codecs
// are made for: sky rows of one colour each, stars of single white pixels,
// water whose rows alternate by a fixed difference, a meadow in a two-colour
// dither sprinkled with flowers.
// ---------------------------------------------------------------------------

Picture wallpaper(int width, int height) {
    Picture p(width, height);
    const int horizon = height * 61 / 100;
    const int shore = height * 80 / 100;
    const double sunX = width * 0.64, sunY = height * 0.25, sunR = 62;
    auto sky = [&](double y) {
        const double t = std::clamp(y / horizon, 0.0, 1.0);
        return t < 0.6 ? mix(rgb(14, 22, 60), rgb(92, 52, 124), t / 0.6)
                       : mix(rgb(92, 52, 124), rgb(250, 156, 96), (t - 0.6) / 0.4);
    };
    std::vector<int> far(width), near(width);
    for (int x = 0; x < width; ++x) {
        far[x] = int(horizon - 62 - 34 * std::sin(x / 97.0) - 22 * std::sin(x / 41.0 + 1.7) - 7 * std::sin(x / 13.0));
        near[x] = int(horizon - 22 - 20 * std::sin(x / 150.0 + 2.0) - 10 * std::sin(x / 37.0 + 0.5));
    }
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            uint32_t c;
            if (y < horizon) {
                c = sky(y);
                if (y < horizon / 2 && hash(x, y, 7) % 1400 == 0) c = 0xFFFFFF;
                const double dx = x - sunX, dy = y - sunY;
                if (dx * dx + dy * dy <= sunR * sunR) {
                    const double band = dy + sunR * 0.1;  // stripes across the lower half
                    const bool gap = band > 0 && std::fmod(band, 12.0) > 12.0 - 1.5 - band / 14;
                    if (!gap) c = mix(rgb(255, 238, 150), rgb(255, 96, 104), (dy + sunR) / (2 * sunR));
                }
                if (y >= far[x]) c = mix(rgb(84, 44, 108), rgb(120, 64, 120), double(y - far[x]) / 90);
                if (y >= near[x]) c = rgb(46, 26, 72);
            } else if (y < shore) {
                const int depth = y - horizon;
                c = mix(sky(horizon - depth * 2.2), rgb(20, 24, 60), 0.45);
                if (depth % 2) c ^= 0x0C0C0C;
                const double half = 70 - depth * 0.35;
                if (std::abs(x - sunX) < half && depth % 4 < 2 && hash(x / 6, y, 3) % 5 != 0)
                    c = mix(rgb(255, 176, 120), c, depth / 180.0);
            } else {
                const int band = (y - shore) / 8;
                const uint32_t g1 = scale(rgb(54, 110, 50), 1.0 - band * 0.04);
                const uint32_t g2 = scale(rgb(36, 84, 40), 1.0 - band * 0.04);
                c = ((x + y) & 1) ? g1 : g2;
                const uint32_t h = hash(x, y, 11);
                if (h % 157 == 0) {
                    static const uint32_t flowers[4] = {rgb(250, 240, 120), rgb(240, 120, 160), 0xFFFFFF, rgb(180, 150, 250)};
                    c = flowers[(h >> 8) & 3];
                }
            }
            p.at(x, y) = c;
        }
    return p;
}

// ---------------------------------------------------------------------------
// A photograph: mountains with snow over a forest and a lake.
// ---------------------------------------------------------------------------

Picture lakePhoto(int width, int height) {
    Picture p(width, height);
    const int shore = height * 69 / 100;
    for (int y = 0; y < shore; ++y)
        for (int x = 0; x < width; ++x) {
            uint32_t c = mix(rgb(96, 156, 226), rgb(206, 226, 246), double(y) / shore);
            const double cloud = noise(x, y * 2.2, 26, 1) * 0.7 + noise(x, y, 9, 2) * 0.3;
            if (cloud > 0.55) c = mix(c, 0xFFFFFF, std::min(1.0, (cloud - 0.55) * 4));
            const double ridge = height * 0.30 + 16 * std::sin(x / 23.0) + 9 * std::sin(x / 9.0 + 1) + 5 * noise(x, 0, 6, 3);
            if (y >= ridge) {
                const double n = noise(x, y, 5, 4);
                c = mix(rgb(92, 92, 112), rgb(140, 136, 150), n);
                if (y < ridge + 10 + 6 * noise(x, y, 4, 5)) c = mix(rgb(236, 238, 248), rgb(200, 206, 226), n);
            }
            const int treeLine = int(height * 0.58 - 7 * std::fabs(std::sin(x * 0.35)) - 4 * noise(x, 0, 3, 6));
            if (y >= treeLine) c = mix(rgb(20, 70, 36), rgb(44, 100, 50), noise(x, y, 3, 7));
            p.at(x, y) = c;
        }
    for (int y = shore; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int mirrored = std::clamp(2 * shore - y - 1, 0, shore - 1);
            const int ripple = int(2.5 * std::sin(y * 1.3 + x * 0.05));
            const uint32_t reflected = p.at(std::clamp(x + ripple, 0, width - 1), mirrored);
            p.at(x, y) = mix(reflected, rgb(24, 60, 96), 0.35 + 0.25 * double(y - shore) / (height - shore));
        }
    return p;
}

Picture thumbnailStrip() {
    Picture p(256, 48);
    static const uint32_t bars[8] = {0xFFFFFF, rgb(255, 255, 0), rgb(0, 255, 255), rgb(0, 255, 0),
                                     rgb(255, 0, 255), rgb(255, 0, 0), rgb(0, 0, 255), 0};
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x) p.at(x, y) = y < 36 ? bars[x / 8] : mix(0, 0xFFFFFF, x / 63.0);
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x) {
            uint32_t c = mix(rgb(255, 150, 60), rgb(80, 30, 110), y / 30.0);
            if ((x - 40) * (x - 40) + (y - 26) * (y - 26) < 100) c = rgb(255, 220, 120);
            if (y >= 30) c = (y % 3 == 0) ? rgb(60, 30, 70) : rgb(20, 10, 40);
            p.at(64 + x, y) = c;
        }
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x) {
            const double dx = x - 32, dy = y - 24, r = std::sqrt(dx * dx + dy * dy), a = std::atan2(dy, dx);
            uint32_t c = mix(rgb(40, 110, 40), rgb(80, 150, 60), y / 48.0);
            const double petal = 16 + 5 * std::cos(6 * a);
            if (r < petal) c = mix(rgb(250, 110, 170), rgb(200, 40, 120), r / petal);
            if (r < 6) c = rgb(250, 210, 60);
            p.at(128 + x, y) = c;
        }
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x) p.at(192 + x, y) = mix(rgb(10, 14, 40), rgb(40, 40, 90), y / 48.0);
    static const int towers[][3] = {{0, 14, 20}, {15, 10, 30}, {26, 12, 16}, {39, 9, 34}, {49, 15, 24}};
    for (const auto &t : towers) {
        fill(p, 192 + t[0], 48 - t[2] - 4, 192 + t[0] + t[1], 48, rgb(24, 24, 36));
        for (int wy = 48 - t[2]; wy < 44; wy += 4)
            for (int wx = t[0] + 2; wx < t[0] + t[1] - 2; wx += 3)
                if (hash(wx, wy, 9) % 3) p.at(192 + wx, wy) = rgb(250, 220, 110);
    }
    return p;
}

Picture toolbarIcons() {
    Picture p(96, 16, rgb(212, 208, 200));
    // 0: new page
    fill(p, 3, 1, 11, 15, 0xFFFFFF);
    frame(p, 3, 1, 11, 15, 0);
    fill(p, 9, 1, 11, 3, rgb(212, 208, 200));
    for (int y = 5; y < 13; y += 2) fill(p, 5, y, 9, y + 1, rgb(120, 120, 120));
    // 1: open folder
    fill(p, 17, 4, 23, 6, rgb(230, 180, 40));
    fill(p, 17, 6, 31, 14, rgb(250, 210, 70));
    frame(p, 17, 6, 31, 14, rgb(120, 80, 0));
    // 2: save
    fill(p, 34, 2, 46, 14, rgb(40, 70, 160));
    fill(p, 36, 2, 44, 7, 0xFFFFFF);
    fill(p, 37, 10, 43, 14, rgb(180, 180, 180));
    // 3: pencil
    for (int i = 0; i < 10; ++i) fill(p, 51 + i, 13 - i, 54 + i, 15 - i, rgb(240, 170, 40));
    fill(p, 50, 13, 52, 15, 0);
    // 4: rectangle tool
    frame(p, 66, 3, 78, 13, rgb(200, 30, 30));
    frame(p, 67, 4, 77, 12, rgb(200, 30, 30));
    // 5: ellipse tool
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const double d = (x - 7.5) * (x - 7.5) / 36.0 + (y - 7.5) * (y - 7.5) / 25.0;
            if (d <= 1.0 && d >= 0.6) p.at(80 + x, y) = rgb(30, 150, 60);
        }
    return p;
}

// ---------------------------------------------------------------------------
// The remote screens of the RFB rectangles.  Each 64 x 64 ZRLE tile of the
// remote desktop is laid out to suit one sub-encoding: flat desktop (solid),
// a noisy photograph (raw), a many-coloured diagonal gradient (plain runs),
// a dithered chart in four colours (2-bit packed palette), a terminal in two
// colours (1-bit packed palette), colour bars (palette runs).
// ---------------------------------------------------------------------------

Picture remoteDesktop() {
    const uint32_t teal = rgb(0, 128, 128);
    Picture p(256, 192, teal);
    // A window over the four top-left tiles.
    fill(p, 8, 8, 121, 121, rgb(192, 192, 192));
    fill(p, 10, 10, 119, 22, rgb(0, 0, 128));
    drawArtText(p, 14, 19, "Report", 0xFFFFFF);
    fill(p, 10, 24, 119, 119, 0xFFFFFF);
    drawArtText(p, 14, 36, "Sales by region", rgb(0, 0, 200));
    static const char *const lines[] = {"North   1,204", "South     987", "East    1,530", "West      802",
                                        "Total   4,523"};
    for (int i = 0; i < 5; ++i) drawArtText(p, 14, 52 + 12 * i, lines[i], 0);
    fill(p, 14, 104, 115, 105, rgb(192, 192, 192));
    // Photograph: raw.
    for (int y = 0; y < 64; ++y)
        for (int x = 128; x < 192; ++x)
            p.at(x, y) = mix(rgb(200, 120, 60), rgb(60, 100, 180), noise(x, y, 7, 21) * 0.8 + unit(x, y, 22) * 0.2);
    // Diagonal gradient, four-pixel runs of over a thousand colours: plain runs.
    for (int y = 0; y < 64; ++y)
        for (int x = 192; x < 256; ++x) p.at(x, y) = rgb(((x - 192) / 4) * 16, y * 4, 160);
    // Bar chart: white ground, black axes, bars dithered red/blue.
    fill(p, 128, 64, 192, 128, 0xFFFFFF);
    fill(p, 134, 70, 135, 122, 0);
    fill(p, 134, 121, 188, 122, 0);
    static const int heights[] = {20, 34, 28, 44, 38};
    for (int i = 0; i < 5; ++i)
        for (int y = 121 - heights[i]; y < 121; ++y)
            for (int x = 138 + 10 * i; x < 145 + 10 * i; ++x)
                p.at(x, y) = ((x + y) & 1) ? rgb(220, 40, 40) : rgb(40, 60, 220);
    // Terminal: green on black.
    fill(p, 192, 64, 256, 128, 0);
    static const char *const term[] = {"$ uptime", " 3 days", "$ df -h", "/ 41%", "$ _"};
    for (int i = 0; i < 5; ++i) drawArtText(p, 195, 76 + 12 * i, term[i], rgb(80, 250, 80));
    // A folder icon on the desktop (three colours).
    fill(p, 80, 140, 96, 146, rgb(230, 190, 60));
    fill(p, 80, 146, 110, 168, rgb(250, 210, 80));
    frame(p, 80, 146, 110, 168, 0);
    drawArtText(p, 78, 182, "Files", 0xFFFFFF);
    // Colour bars: 32 hues, light above and dark below: palette runs.
    for (int y = 128; y < 192; ++y)
        for (int x = 128; x < 256; ++x) p.at(x, y) = hsv(((x - 128) / 4) / 32.0, y < 160 ? 0.55 : 0.9, y < 160 ? 1.0 : 0.6);
    return p;
}

Picture remoteDocument() {
    const uint32_t grey = rgb(212, 208, 200);
    Picture p(256, 120, grey);
    // Toolbar with coloured buttons (coloured subrectangles).
    static const uint32_t buttons[] = {rgb(200, 40, 40), rgb(40, 160, 60), rgb(40, 80, 200), rgb(230, 180, 30),
                                       rgb(150, 60, 180), rgb(30, 170, 170)};
    for (int i = 0; i < 6; ++i) {
        fill(p, 6 + 20 * i, 4, 22 + 20 * i, 20, rgb(240, 240, 240));
        fill(p, 9 + 20 * i, 7, 19 + 20 * i, 17, buttons[i]);
        fill(p, 12 + 20 * i, 10, 16 + 20 * i, 14, 0xFFFFFF);
    }
    // A page of text: black on white (two colours per tile).
    fill(p, 16, 28, 240, 104, 0xFFFFFF);
    static const char *const text[] = {"Meeting notes, 14 March", "- tile cache hit rate 97%",
                                       "- frame time 4 ms on the terminal", "- next: glyph fragments",
                                       "- ship the armhf package"};
    for (int i = 0; i < 5; ++i) drawArtText(p, 24, 42 + 14 * i, text[i], 0);
    // Status strip with a gradient (raw tiles).
    for (int y = 108; y < 120; ++y)
        for (int x = 0; x < 256; ++x) p.at(x, y) = mix(rgb(30, 60, 140), rgb(140, 200, 240), x / 255.0 + (y - 108) * 0.004);
    return p;
}

Picture colourPicker(int width, int height) {
    Picture p(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double t = double(y) / (height - 1);
            p.at(x, y) = t < 0.5 ? hsv(double(x) / width, t * 2, 1.0) : hsv(double(x) / width, 1.0, 1.0 - (t - 0.5) * 1.6);
        }
    return p;
}

Picture paletteSwatches(int width, int height) {
    static const uint32_t palette[16] = {
        0,                  rgb(128, 0, 0),   rgb(0, 128, 0),   rgb(128, 128, 0), rgb(0, 0, 128),   rgb(128, 0, 128),
        rgb(0, 128, 128),   rgb(192, 192, 192), rgb(128, 128, 128), rgb(255, 0, 0), rgb(0, 255, 0), rgb(255, 255, 0),
        rgb(0, 0, 255),     rgb(255, 0, 255), rgb(0, 255, 255), 0xFFFFFF};
    Picture p(width, height, rgb(128, 128, 128));
    const int w = width / 8, h = height / 2;
    for (int i = 0; i < 16; ++i) fill(p, (i % 8) * w + 1, (i / 8) * h + 1, (i % 8 + 1) * w - 1, (i / 8 + 1) * h - 1, palette[i]);
    return p;
}

Pointer arrowPointer() {
    static const char *const art[] = {
        "X           ", "XX          ", "XoX         ", "XooX        ", "XoooX       ", "XooooX      ",
        "XoooooX     ", "XooooooX    ", "XoooooooX   ", "XooooooooX  ", "XoooooooooX ", "XooooooXXXXX",
        "XoooXooX    ", "XooX XooX   ", "XoX  XooX   ", "XX    XooX  ", "X     XooX  ", "       XooX ",
        "       XooX ", "        XX  "};
    Pointer pointer{Picture(16, 24, 0), Mask(16, 24)};
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 12; ++x) {
            const char c = art[y][x];
            if (c == ' ') continue;
            pointer.opaque.set(x, y);
            pointer.colours.at(x, y) = c == 'X' ? 0 : 0xFFFFFF;
        }
    return pointer;
}

std::vector<IconLayer> iconLayers(Icon icon) {
    std::vector<IconLayer> layers;
    Mask a(32, 32), b(32, 32), outline(32, 32);
    switch (icon) {
        case kComputer:
            rect(a, 3, 3, 28, 21);
            rect(a, 13, 22, 18, 25);
            rect(a, 7, 26, 24, 29);
            rect(b, 6, 6, 25, 18);
            outlineRect(outline, 3, 3, 28, 21);
            outlineRect(outline, 6, 6, 25, 18);
            outlineRect(outline, 7, 26, 24, 29);
            line(outline, 13, 22, 13, 25);
            line(outline, 18, 22, 18, 25);
            layers = {{a, rgb(200, 200, 196)}, {b, rgb(40, 90, 200)}, {outline, 0}};
            break;
        case kFolder:
            rect(a, 3, 5, 13, 9);
            rect(a, 3, 8, 28, 27);
            rect(b, 5, 13, 30, 27);
            outlineRect(outline, 3, 8, 28, 27);
            line(outline, 3, 5, 13, 5);
            line(outline, 3, 5, 3, 8);
            line(outline, 13, 5, 14, 8);
            line(outline, 5, 13, 30, 13);
            line(outline, 30, 13, 28, 27);
            layers = {{a, rgb(224, 176, 48)}, {b, rgb(252, 216, 96)}, {outline, rgb(96, 64, 0)}};
            break;
        case kNetwork:
            for (int y = 0; y < 32; ++y)
                for (int x = 0; x < 32; ++x) {
                    const double d = std::hypot(x - 15.5, y - 15.5);
                    if (d <= 13) a.set(x, y);
                    if (d <= 12.5 && noise(x, y, 6, 31) > 0.55) b.set(x, y);
                    if (d <= 13 && d > 12) outline.set(x, y);
                }
            line(outline, 3, 16, 28, 16);
            line(outline, 16, 3, 16, 28);
            for (int y = 4; y < 28; ++y) {
                const int dx = int(7 * std::sqrt(std::max(0.0, 1 - (y - 15.5) * (y - 15.5) / 144.0)));
                outline.set(16 - dx, y), outline.set(16 + dx, y);
            }
            layers = {{a, rgb(60, 130, 230)}, {b, rgb(60, 180, 80)}, {outline, rgb(10, 30, 100)}};
            break;
        default:
            rect(a, 8, 10, 23, 28);
            rect(b, 6, 6, 25, 9);
            rect(b, 13, 4, 18, 5);
            outlineRect(outline, 8, 10, 23, 28);
            outlineRect(outline, 6, 6, 25, 9);
            for (int x = 11; x <= 20; x += 3) line(outline, x, 12, x, 26);
            layers = {{a, rgb(170, 176, 180)}, {b, rgb(110, 116, 120)}, {outline, rgb(30, 30, 30)}};
            break;
    }
    return layers;
}

Mask symbol(Symbol s) {
    Mask m(8, 8);
    switch (s) {
        case kClose:
            for (int i = 0; i < 7; ++i) m.set(i, i), m.set(i + 1, i), m.set(6 - i, i), m.set(7 - i, i);
            break;
        case kMinimise:
            rect(m, 1, 6, 6, 7);
            break;
        default:
            outlineRect(m, 0, 0, 7, 7);
            rect(m, 0, 1, 7, 1);
            break;
    }
    return m;
}

}  // namespace demo
