// The pictures the demo sends, all computed: wallpaper, photographs,
// icons, the remote screens behind the RFB rectangles, the mouse pointer.
#pragma once

#include <cstdint>
#include <vector>

#include "font.h"
#include "picture.h"

namespace demo {

using kit::Picture;

constexpr uint32_t rgb(int r, int g, int b) {
    return uint32_t(r & 0xFF) << 16 | uint32_t(g & 0xFF) << 8 | uint32_t(b & 0xFF);
}
uint32_t mix(uint32_t a, uint32_t b, double t);  // a at t = 0, b at t = 1

Picture wallpaper(int width, int height);
Picture lakePhoto(int width, int height);
Picture thumbnailStrip();   // four 64 x 48 pictures side by side
Picture toolbarIcons();     // six 16 x 16 icons side by side
Picture remoteDesktop();    // 256 x 192, for the ZRLE tiles
Picture remoteDocument();   // 256 x 120, for the Hextile rectangle
Picture colourPicker(int width, int height);
Picture paletteSwatches(int width, int height);

// The mouse pointer: 16 x 24 colours and the mask of its opaque pixels.
struct Pointer {
    Picture colours;
    Mask opaque;
};
Pointer arrowPointer();

// Desktop icons, 32 x 32, as monochrome layers painted one over the other
// (one FastGlyph order each).
enum Icon { kComputer, kFolder, kNetwork, kTrash, kIconCount };
struct IconLayer {
    Mask mask;
    uint32_t colour;
};
std::vector<IconLayer> iconLayers(Icon icon);

// Text in the demo's small face, drawn straight into a picture.
void drawArtText(Picture &picture, int x, int baseline, const char *text, uint32_t colour);

// Caption-button symbols, 8 x 8: close, minimise, maximise.
enum Symbol { kClose, kMinimise, kMaximise, kSymbolCount };
Mask symbol(Symbol s);

}  // namespace demo
