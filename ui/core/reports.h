// Every report the library can make, in one table: its name in the code, the
// module and fixed site number a client sees, the print format, and what it
// means.  Clients and their support tools match on module and site, so these
// numbers never change.  The library's report calls, docs/reports.md
// (tools/reportTable.cpp prints it) and the tests' expected trails all take
// their numbers from here.
//
// X(name, module, site, format, meaning)
#pragma once

#define UI32_INTERNAL "INTERNAL ERROR. Please, contact Nelvox tech support."
#define UI32_SHORT "Not enough data in stream in %s line %d."

#define UI32_REPORTS(X)                                                                                           \
    X(imageWrite, "imgbuf", 99, UI32_INTERNAL, "a rectangle to draw is negative or outside the image")           \
    X(imageRead, "imgbuf", 83, UI32_INTERNAL, "a rectangle to read is negative or outside the image")            \
    X(tileRange, "dirtybuf", 114, "%d,%d->%d,%d of %d,%d",                                                        \
      "tiles tx0,ty0->tx1,ty1 of columns,rows: empty, outside the map, or no map; the drawing stands")           \
    X(shortU8, "streamInOps", 64, UI32_SHORT, "a byte is missing; it reads as 0 (caller source and line given)")   \
    X(shortU16, "streamInOps", 65, UI32_SHORT, "a 16-bit value is missing; it reads as 0")                         \
    X(shortBlock, "streamInOps", 275, UI32_INTERNAL, "a block is longer than the bytes left")                     \
    X(shortSkip, "streamInOps", 283, UI32_INTERNAL, "a skip is longer than the bytes left")                       \
    X(glyphEntry, "rdpclient-caches", 64, UI32_INTERNAL,                                                           \
      "no usable glyph entry: index not below the count, no cache, or a bitmap larger than the entry")           \
    X(noFragmentStore, "ui", 3782, UI32_INTERNAL,                                                                  \
      "the fragment store could not be reserved; glyph string orders are then refused here too")                 \
    X(fillSolid, "ui", 1250, UI32_INTERNAL, "solid fill outside the image")                                        \
    X(fillRop, "ui", 1274, UI32_INTERNAL, "raster-operation fill outside the image")                               \
    X(fillPattern, "ui", 1308, UI32_INTERNAL, "8x8 pattern fill outside the image")                                \
    X(xPhaseLow, "ui", 1315, UI32_INTERNAL, "pattern x phase below 0")                                             \
    X(xPhaseHigh, "ui", 1316, UI32_INTERNAL, "pattern x phase above 7")                                            \
    X(yPhaseLow, "ui", 1318, UI32_INTERNAL, "pattern y phase below 0")                                             \
    X(yPhaseHigh, "ui", 1319, UI32_INTERNAL, "pattern y phase above 7")                                            \
    X(colourPattern, "ui", 1387, UI32_INTERNAL, "cached colour brush outside the image; tiles still marked")       \
    X(noBrushData, "ui", 1476, UI32_INTERNAL, "cached brush without data")                                         \
    X(brushStyle, "ui", 1500, "Brush style 0x%04x.", "cached brush of a kind that is not drawn")                   \
    X(hatch, "ui", 1522, UI32_INTERNAL, "hatch number above 5, or no hatch table")                                 \
    X(unsupportedBrush, "ui", 1531, "Unsupported brush %d.", "brush style that is not drawn")                      \
    X(scrBltSource, "ui", 1567, UI32_INTERNAL, "ScrBlt source outside the image")                                  \
    X(scrBltDestination, "ui", 1570, UI32_INTERNAL, "ScrBlt destination outside the image")                        \
    X(memBltDestination, "ui", 1738, UI32_INTERNAL, "MemBlt destination outside the image")                        \
    X(lineUnsettled, "ui", 1865, UI32_INTERNAL, "sloped line not settled after five clipping passes")              \
    X(linePixel, "ui", 1947, UI32_INTERNAL, "one-pixel line outside the image")                                    \
    X(lineVertical, "ui", 2010, UI32_INTERNAL, "vertical line outside the image")                                  \
    X(lineHorizontal, "ui", 2072, UI32_INTERNAL, "horizontal line outside the image")                              \
    X(lineClippedPixel, "ui", 2131, UI32_INTERNAL, "sloped line clipped to one pixel outside the image")           \
    X(lineSloped, "ui", 2183, UI32_INTERNAL, "sloped line's bounding box outside the image")                       \
    X(decodeArguments, "ui", 902, UI32_INTERNAL,                                                                   \
      "bitmap refused: negative length, bad size, depth below 3, null buffer, data shorter than its rows")       \
    X(overrun, "ui", 341, "%d > %d!", "interleaved orders ran past the output (dstPos > dstSize, bytes)")          \
    X(colourImage, "ui", 534, UI32_INTERNAL, "interleaved colour image longer than the data; skipped")             \
    X(unknownHeader, "ui", 1108, "Unknown header 0x%02x. Sync lost?", "interleaved order header unknown")          \
    X(planarSize, "ui", 919, UI32_INTERNAL, "planar bitmap without data or with width x 4 x height <= 0")          \
    X(planarHeader, "ui", 929, UI32_INTERNAL, "planar colour loss, subsampling or reserved bits")                  \
    X(alphaOverrun, "ui", 764, UI32_INTERNAL, "run-length alpha segment past the end of its row")                  \
    X(planarRowOverrun, "ui", 812, UI32_INTERNAL, "first-row segment past the end of its row")                     \
    X(planarDeltaOverrun, "ui", 865, UI32_INTERNAL, "delta-row segment past the end of its row")                   \
    X(alphaPlane, "ui", 939, UI32_INTERNAL, "run-length alpha plane failed")                                       \
    X(redPlane, "ui", 944, UI32_INTERNAL, "red plane failed")                                                      \
    X(greenPlane, "ui", 948, UI32_INTERNAL, "green plane failed")                                                  \
    X(bluePlane, "ui", 952, UI32_INTERNAL, "blue plane failed")                                                    \
    X(rawPlanes, "ui", 973, UI32_INTERNAL, "raw planes shorter than three planes")                                 \
    X(bitmapSize, "ui", 1168, UI32_INTERNAL, "destination wider or taller than the bitmap")                        \
    X(bitmapTooLarge, "ui", 1199, UI32_INTERNAL, "compressed bitmap of more than 65,536 pixels")                   \
    X(bitmapDecode, "ui", 1205, UI32_INTERNAL, "bitmap decoding failed")                                           \
    X(bitmapCompressedDestination, "ui", 1210, UI32_INTERNAL, "decoded bitmap cannot be placed in the image")      \
    X(bitmapRawDestination, "ui", 1229, UI32_INTERNAL,                                                             \
      "uncompressed bitmap cannot be placed, or its data is shorter than its rows")                              \
    X(glyphImage, "ui", 2451, UI32_INTERNAL, "visible part of a glyph outside the image")                          \
    X(indexFlagsTop, "ui", 2586, UI32_INTERNAL, "FastIndex opaque flags without 0x01")                             \
    X(indexFlagsBottom, "ui", 2592, UI32_INTERNAL, "FastIndex opaque flags without 0x04")                          \
    X(storeShort, "ui", 2672, UI32_INTERNAL, "store-fragment command cut short")                                   \
    X(storeLong, "ui", 2680, UI32_INTERNAL, "fragment longer than the bytes before the command")                   \
    X(useShort, "ui", 2702, UI32_INTERNAL, "use-fragment command without its slot")                                \
    X(fragmentFull, "ui", 2734, UI32_INTERNAL, "a fragment's glyphs would fill the list (4,096)")                  \
    X(useFull, "ui", 2749, UI32_INTERNAL, "a fragment would fill the glyph list (4,096)")                          \
    X(glyphListFull, "ui", 2774, UI32_INTERNAL, "the glyph list would reach 4,096 entries")                        \
    X(fastFlagsTop, "ui", 2863, UI32_INTERNAL, "FastGlyph opaque flags without 0x01")                              \
    X(fastFlagsBottom, "ui", 2869, UI32_INTERNAL, "FastGlyph opaque flags without 0x04")                           \
    X(fastGlyph, "ui", 2928, UI32_INTERNAL, "FastGlyph's glyph missing from the cache")                            \
    X(bufferLeft, "ui", 2946, UI32_INTERNAL, "buffer fill left of the image")                                      \
    X(bufferRight, "ui", 2947, UI32_INTERNAL, "buffer fill right of the image")                                    \
    X(bufferTop, "ui", 2948, UI32_INTERNAL, "buffer fill above the image")                                         \
    X(bufferBottom, "ui", 2949, UI32_INTERNAL, "buffer fill below the image")                                      \
    X(charCell, "ui", 2963, UI32_INTERNAL, "character cell outside the image")                                     \
    X(hLineLength, "ui", 2987, UI32_INTERNAL, "horizontal line of length <= 0")                                    \
    X(hLine, "ui", 2993, UI32_INTERNAL, "horizontal line outside the image")                                       \
    X(vLineLength, "ui", 3006, UI32_INTERNAL, "vertical line of length <= 0")                                      \
    X(vLine, "ui", 3012, UI32_INTERNAL, "vertical line outside the image")                                         \
    X(putPixels, "ui", 3449, UI32_INTERNAL, "putPixels rectangle outside the image")                               \
    X(copySize, "ui", 3470, UI32_INTERNAL, "copyRect of width or height <= 0")                                     \
    X(copyDestination, "ui", 3473, UI32_INTERNAL, "copyRect destination outside the image")                        \
    X(copySource, "ui", 3476, UI32_INTERNAL, "copyRect source outside the image")                                  \
    X(rawTileNull, "ui", 3086, UI32_INTERNAL, "raw tile body at a null ptr")                                       \
    X(rawTile, "ui", 3089, UI32_INTERNAL, "raw tile outside the image")                                            \
    X(solidTile, "ui", 3127, UI32_INTERNAL, "solid tile outside the image, or its body at a null ptr")             \
    X(packedSize, "ui", 3148, UI32_INTERNAL, "packed palette size above 16 or negative")                           \
    X(packedTile, "ui", 3170, UI32_INTERNAL, "packed palette tile outside the image")                              \
    X(packedNull1, "ui", 3181, UI32_INTERNAL, "1-bit packed indexes at a null ptr")                                \
    X(packedNull2, "ui", 3226, UI32_INTERNAL, "2-bit packed indexes at a null ptr")                                \
    X(packedNull4, "ui", 3267, UI32_INTERNAL, "4-bit packed indexes at a null ptr")                                \
    X(plainRleTile, "ui", 3306, UI32_INTERNAL, "plain run-length tile outside the image, or body at a null ptr")   \
    X(plainRleRun, "ui", 3347, UI32_INTERNAL, "plain run longer than the pixels left")                             \
    X(paletteRleTile, "ui", 3394, UI32_INTERNAL,                                                                   \
      "palette run-length tile outside the image, sub-encoding outside 128-255, or body at a null ptr")          \
    X(paletteRleRun, "ui", 3421, UI32_INTERNAL, "palette run longer than the pixels left")                         \
    X(hextileRaw, "ui", 3550, UI32_INTERNAL, "Hextile raw pixels not delivered")                                   \
    X(hextileColouredCount, "ui", 3593, UI32_INTERNAL, "Hextile coloured subrectangle count 0")                    \
    X(hextileColouredRead, "ui", 3595, UI32_INTERNAL, "Hextile coloured subrectangles not delivered")              \
    X(hextileCount, "ui", 3633, UI32_INTERNAL, "Hextile subrectangle count 0")                                     \
    X(hextileRead, "ui", 3635, UI32_INTERNAL, "Hextile subrectangles not delivered")                               \
    X(hextileRect, "ui", 3673, UI32_INTERNAL, "Hextile rectangle outside the image, or no image")                  \
    X(hextileSubencoding, "ui", 3706, UI32_INTERNAL, "Hextile sub-encoding byte not delivered")                    \
    X(hextileRawTile, "ui", 3713, UI32_INTERNAL, "Hextile raw tile failed")                                        \
    X(hextileBackground, "ui", 3719, UI32_INTERNAL, "Hextile background not delivered")                            \
    X(hextileForeground, "ui", 3724, UI32_INTERNAL, "Hextile foreground not delivered")                            \
    X(hextileCountRead, "ui", 3736, UI32_INTERNAL, "Hextile subrectangle count not delivered")                     \
    X(hextileColouredTile, "ui", 3739, UI32_INTERNAL, "Hextile coloured subrectangles failed")                     \
    X(hextilePlainTile, "ui", 3743, UI32_INTERNAL, "Hextile subrectangles failed")

// The places that read through the stream reader's readU8 / readU16.  A
// shortage report ("streamInOps" 64 or 65) names the reader's module and line
// as its site, like every other report, and its text names the caller: source
// "ui" and one of these lines.  So a client that matches on the text learns
// which field of which decoder was missing (the first, second or third byte
// of a colour, say), which the reader's own site alone cannot tell.
//
// X(name, line, meaning)
#define UI32_READ_LINES(X)                                                                   \
    X(regularRun, 358, "extra length byte of a regular run (reads as 32)")                   \
    X(regularImageRun, 372, "extra length byte of a regular foreground/background image")    \
    X(liteRun, 382, "extra length byte of a lite run (reads as 16)")                         \
    X(liteImageRun, 396, "extra length byte of a lite foreground/background image")          \
    X(megaRun, 401, "16-bit length of a mega-mega order (reads as 0)")                       \
    X(colourByte0, 409, "first byte of a colour")                                            \
    X(colourByte1, 410, "second byte of a colour")                                           \
    X(colourByte2, 411, "third byte of a colour")                                            \
    X(maskFirstRow, 555, "bitmask byte, first row, eight pixels")                            \
    X(maskFirstRowPart, 575, "bitmask byte, first row, last 1-7 pixels")                     \
    X(maskLowerRow, 589, "bitmask byte, lower rows, eight pixels")                           \
    X(maskLowerRowPart, 611, "bitmask byte, lower rows, last 1-7 pixels")                    \
    X(alphaControl, 746, "control byte of a run-length alpha plane")                         \
    X(firstRowControl, 794, "control byte, first row of a plane")                            \
    X(firstRowRaw, 818, "raw byte, first row of a plane (reads as 0)")                       \
    X(deltaRowControl, 847, "control byte, later row of a plane")                            \
    X(deltaRowRaw, 871, "raw delta byte, later row of a plane (reads as delta 0)")           \
    X(packedPalette, 3160, "packed palette entry, bytes at 3160, 3161, 3162")                \
    X(rlePalette, 3384, "palette run-length palette entry, bytes at 3384, 3385, 3386")

namespace ui {

#define UI32_NAME(name, ...) name,
enum class Site { UI32_REPORTS(UI32_NAME) };
enum class Line { UI32_READ_LINES(UI32_NAME) };
#undef UI32_NAME

struct ReportInfo {
    const char *module;
    int site;
    const char *format;
    const char *meaning;
};

#define UI32_INFO(name, module, site, format, meaning) {module, site, format, meaning},
inline constexpr ReportInfo kReports[] = {UI32_REPORTS(UI32_INFO)};
#undef UI32_INFO
#define UI32_LINE(name, line, meaning) line,
inline constexpr int kLines[] = {UI32_READ_LINES(UI32_LINE)};
#undef UI32_LINE

constexpr const ReportInfo &info(Site s) { return kReports[int(s)]; }
constexpr int lineOf(Line l) { return kLines[int(l)]; }

}  // namespace ui
