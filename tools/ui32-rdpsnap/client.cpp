#include "client.h"

#include <freerdp/freerdp.h>
#include <freerdp/input.h>
#include <winpr/synch.h>

#include <algorithm>
#include <cstring>

namespace rdpsnap {

namespace {

// A picture has settled when nothing arrived for this long.
constexpr std::chrono::milliseconds kQuiet(1500);

struct SnapContext {
    rdpContext base;
    Client *client;
};

Client &owner(rdpContext *context) { return Client::of(context); }

// What ui32 draws: counted (as an update or an order), then mapped.
#define MAPPED(Type, kind, Name, method)                    \
    [](rdpContext *c, Type *o) -> BOOL {                    \
        Client &client = owner(c);                          \
        client.count(kind, Name);                           \
        return client.mapped(client.mapping().method(*o)); \
    }
// Orders that were not announced, and updates that need no drawing: counted.
#define COUNTED(Type, kind, Name) [](rdpContext *c, Type *) -> BOOL { return owner(c).count(kind, Name); }

BOOL onPreConnect(freerdp *instance) {
    owner(instance->context).preConnect();
    return TRUE;
}

BOOL onPostConnect(freerdp *instance) { return owner(instance->context).postConnect(); }

BOOL authenticate(freerdp *, char **, char **, char **) { return TRUE; }

}  // namespace

Client &Client::of(rdpContext *context) { return *reinterpret_cast<SnapContext *>(context)->client; }

Client::Client(const UiDrawTable &table, Options options)
    : options_(std::move(options)), canvas_(table), mapper_(canvas_, caches_, options_.bpp) {
    instance_ = freerdp_new();
    if (instance_ == nullptr) return;
    instance_->ContextSize = sizeof(SnapContext);
    instance_->PreConnect = onPreConnect;
    instance_->PostConnect = onPostConnect;
    instance_->Authenticate = authenticate;
    if (!freerdp_context_new(instance_)) {
        freerdp_free(instance_);
        instance_ = nullptr;
        return;
    }
    reinterpret_cast<SnapContext *>(instance_->context)->client = this;
}

Client::~Client() {
    if (instance_ == nullptr) return;
    freerdp_context_free(instance_);
    freerdp_free(instance_);
}

// The capabilities: 24- or 32-bit colour with bitmap updates in the
// interleaved or planar codec only (no RemoteFX, NSCodec, JPEG, GFX or
// surface commands), the ten primary orders ui32 draws, bitmap cache
// revision 2 without persistence or waiting list, the full glyph cache with
// fragments, 8x8 colour brushes, no offscreen bitmaps.
void Client::preConnect() {
    rdpSettings *s = instance_->settings;
    free(s->ServerHostname);
    s->ServerHostname = strdup(options_.host.c_str());
    s->ServerPort = options_.port;
    if (!options_.user.empty()) {
        free(s->Username);
        free(s->Password);
        s->Username = strdup(options_.user.c_str());
        s->Password = strdup(options_.password.c_str());
        s->AutoLogonEnabled = TRUE;
    }
    s->IgnoreCertificate = TRUE;
    s->DesktopWidth = uint32_t(options_.width);
    s->DesktopHeight = uint32_t(options_.height);
    s->ColorDepth = options_.bpp;
    s->DesktopResize = TRUE;
    s->RemoteFxCodec = s->NSCodec = s->JpegCodec = s->SupportGraphicsPipeline = s->GfxH264 = FALSE;
    s->SurfaceCommandsEnabled = s->FrameMarkerCommandEnabled = FALSE;
    s->OffscreenSupportLevel = 0;
    s->BrushSupportLevel = 1;  // BRUSH_COLOR_8x8: mono and colour 8x8 brushes cached
    s->GlyphSupportLevel = GLYPH_SUPPORT_FULL;
    std::memset(s->OrderSupport, 0, 32);
    for (int order : {NEG_DSTBLT_INDEX, NEG_PATBLT_INDEX, NEG_SCRBLT_INDEX, NEG_MEMBLT_INDEX, NEG_OPAQUE_RECT_INDEX,
                      NEG_MULTIOPAQUERECT_INDEX, NEG_LINETO_INDEX, NEG_GLYPH_INDEX_INDEX, NEG_FAST_INDEX_INDEX,
                      NEG_FAST_GLYPH_INDEX})
        s->OrderSupport[order] = TRUE;
    s->BitmapCacheEnabled = TRUE;
    s->BitmapCacheVersion = 2;
    s->BitmapCacheV3Enabled = s->AllowCacheWaitingList = s->BitmapCachePersistEnabled = FALSE;
    s->BitmapCacheV2NumCells = Caches::kBitmapCaches;
    for (int i = 0; i < Caches::kBitmapCaches; ++i)
        s->BitmapCacheV2CellInfo[i] = BITMAP_CACHE_V2_CELL_INFO{uint32_t(Caches::kBitmapEntries[i]), FALSE};
    std::array<std::pair<int, int>, Caches::kGlyphCaches> glyphs;
    for (int i = 0; i < Caches::kGlyphCaches; ++i)
        glyphs[i] = {s->GlyphCache[i].cacheEntries, s->GlyphCache[i].cacheMaximumCellSize};
    caches_.setGlyphCaches(glyphs);
}

bool Client::postConnect() {
    rdpSettings *s = instance_->settings;
    if (s->ColorDepth != options_.bpp) {
        error_ = "the server chose " + std::to_string(s->ColorDepth) + "-bit colour";
        return false;
    }
    rdpUpdate *u = instance_->update;
    // Updates FreeRDP treats as failed when nobody takes them.
    u->BeginPaint = u->EndPaint = u->Synchronize = [](rdpContext *) -> BOOL { return TRUE; };
    u->SaveSessionInfo = [](rdpContext *c, UINT32, void *) -> BOOL {
        return owner(c).count(Client::kUpdate, "SaveSessionInfo");
    };
    u->ServerStatusInfo = [](rdpContext *c, UINT32) -> BOOL {
        return owner(c).count(Client::kUpdate, "ServerStatusInfo");
    };
    u->SetKeyboardIndicators = [](rdpContext *c, UINT16) -> BOOL {
        return owner(c).count(Client::kUpdate, "SetKeyboardIndicators");
    };
    u->SetKeyboardImeStatus = [](rdpContext *c, UINT16, UINT32, UINT32) -> BOOL {
        return owner(c).count(Client::kUpdate, "SetKeyboardImeStatus");
    };
    u->PlaySound = COUNTED(const PLAY_SOUND_UPDATE, Client::kUpdate, "PlaySound");
    return attachDrawing();
}

bool Client::attachDrawing() {
    rdpUpdate *u = instance_->update;
    rdpSettings *s = instance_->settings;
    canvas_.resize(int32_t(s->DesktopWidth), int32_t(s->DesktopHeight));
    u->SetBounds = [](rdpContext *c, const rdpBounds *b) -> BOOL {
        owner(c).drawing().setBounds(b != nullptr ? &b->left : nullptr);
        return TRUE;
    };
    u->BitmapUpdate = MAPPED(const BITMAP_UPDATE, Client::kUpdate, "BitmapUpdate", bitmapUpdate);
    u->DesktopResize = [](rdpContext *c) -> BOOL {
        owner(c).drawing().resize(int32_t(c->settings->DesktopWidth), int32_t(c->settings->DesktopHeight));
        return owner(c).count(Client::kUpdate, "DesktopResize");
    };
    u->pointer->PointerLarge = COUNTED(const POINTER_LARGE_UPDATE, Client::kUpdate, "PointerLarge");
    u->Palette = COUNTED(const PALETTE_UPDATE, Client::kUpdate, "Palette");
    u->SurfaceBits = COUNTED(const SURFACE_BITS_COMMAND, Client::kUpdate, "SurfaceBits (not drawn)");
    u->pointer->PointerPosition = COUNTED(const POINTER_POSITION_UPDATE, Client::kUpdate, "PointerPosition");
    u->pointer->PointerSystem = COUNTED(const POINTER_SYSTEM_UPDATE, Client::kUpdate, "PointerSystem");
    u->pointer->PointerColor = COUNTED(const POINTER_COLOR_UPDATE, Client::kUpdate, "PointerColor");
    u->pointer->PointerNew = COUNTED(const POINTER_NEW_UPDATE, Client::kUpdate, "PointerNew");
    u->pointer->PointerCached = COUNTED(const POINTER_CACHED_UPDATE, Client::kUpdate, "PointerCached");
    rdpPrimaryUpdate *p = u->primary;
    p->DstBlt = MAPPED(const DSTBLT_ORDER, Client::kOrder, "DstBlt", dstBlt);
    p->PatBlt = MAPPED(PATBLT_ORDER, Client::kOrder, "PatBlt", patBlt);
    p->ScrBlt = MAPPED(const SCRBLT_ORDER, Client::kOrder, "ScrBlt", scrBlt);
    p->OpaqueRect = MAPPED(const OPAQUE_RECT_ORDER, Client::kOrder, "OpaqueRect", opaqueRect);
    p->MultiOpaqueRect = MAPPED(const MULTI_OPAQUE_RECT_ORDER, Client::kOrder, "MultiOpaqueRect", multiOpaqueRect);
    p->LineTo = MAPPED(const LINE_TO_ORDER, Client::kOrder, "LineTo", lineTo);
    p->MemBlt = MAPPED(MEMBLT_ORDER, Client::kOrder, "MemBlt", memBlt);
    p->GlyphIndex = MAPPED(GLYPH_INDEX_ORDER, Client::kOrder, "GlyphIndex", glyphIndex);
    p->FastIndex = MAPPED(const FAST_INDEX_ORDER, Client::kOrder, "FastIndex", fastIndex);
    p->FastGlyph = MAPPED(const FAST_GLYPH_ORDER, Client::kOrder, "FastGlyph", fastGlyph);
    p->Mem3Blt = COUNTED(MEM3BLT_ORDER, Client::kOrder, "Mem3Blt (not announced)");
    p->MultiDstBlt = COUNTED(const MULTI_DSTBLT_ORDER, Client::kOrder, "MultiDstBlt (not announced)");
    p->MultiPatBlt = COUNTED(const MULTI_PATBLT_ORDER, Client::kOrder, "MultiPatBlt (not announced)");
    p->MultiScrBlt = COUNTED(const MULTI_SCRBLT_ORDER, Client::kOrder, "MultiScrBlt (not announced)");
    p->Polyline = COUNTED(const POLYLINE_ORDER, Client::kOrder, "Polyline (not announced)");
    p->PolygonSC = COUNTED(const POLYGON_SC_ORDER, Client::kOrder, "PolygonSC (not announced)");
    p->PolygonCB = COUNTED(POLYGON_CB_ORDER, Client::kOrder, "PolygonCB (not announced)");
    p->EllipseSC = COUNTED(const ELLIPSE_SC_ORDER, Client::kOrder, "EllipseSC (not announced)");
    p->EllipseCB = COUNTED(const ELLIPSE_CB_ORDER, Client::kOrder, "EllipseCB (not announced)");
    p->SaveBitmap = COUNTED(const SAVE_BITMAP_ORDER, Client::kOrder, "SaveBitmap (not announced)");
    rdpSecondaryUpdate *sec = u->secondary;
    sec->CacheBitmap = MAPPED(const CACHE_BITMAP_ORDER, Client::kOrder, "CacheBitmap", cacheBitmap);
    sec->CacheBitmapV2 = MAPPED(CACHE_BITMAP_V2_ORDER, Client::kOrder, "CacheBitmapV2", cacheBitmapV2);
    sec->CacheBitmapV3 = COUNTED(CACHE_BITMAP_V3_ORDER, Client::kOrder, "CacheBitmapV3 (not announced)");
    sec->CacheGlyph = MAPPED(const CACHE_GLYPH_ORDER, Client::kOrder, "CacheGlyph", cacheGlyph);
    sec->CacheGlyphV2 = MAPPED(const CACHE_GLYPH_V2_ORDER, Client::kOrder, "CacheGlyphV2", cacheGlyphV2);
    sec->CacheBrush = MAPPED(const CACHE_BRUSH_ORDER, Client::kOrder, "CacheBrush", cacheBrush);
    sec->CacheColorTable = COUNTED(const CACHE_COLOR_TABLE_ORDER, Client::kOrder, "CacheColorTable");
    return true;
}

bool Client::count(Kind kind, const char *name) {
    ++(kind == kUpdate ? updates_ : orders_)[name];
    lastActivity_ = Clock::now();
    return true;
}

bool Client::mapped(bool ok) {
    if (!ok && error_.empty()) error_ = "malformed server stream: " + mapper_.error();
    drew();
    return ok;
}

void Client::drew() {
    drawn_ = true;
    lastActivity_ = Clock::now();
}

bool Client::run() {
    if (instance_ == nullptr) {
        error_ = "cannot create a FreeRDP instance";
        return false;
    }
    if (!freerdp_connect(instance_)) {
        if (error_.empty())
            error_ = std::string("cannot connect: ") +
                     freerdp_get_last_error_string(freerdp_get_last_error(instance_->context));
        return false;
    }
    const bool ok = loop();
    freerdp_disconnect(instance_);
    return ok;
}

bool Client::loop() {
    const Clock::time_point start = Clock::now(), deadline = start + std::chrono::seconds(options_.timeoutSeconds);
    lastActivity_ = start;
    for (;;) {
        HANDLE handles[64];
        const DWORD n = freerdp_get_event_handles(instance_->context, handles, 64);
        if (n == 0) {
            error_ = "cannot wait for the connection";
            return false;
        }
        WaitForMultipleObjects(n, handles, FALSE, 50);
        if (!freerdp_check_event_handles(instance_->context) || freerdp_shall_disconnect(instance_)) {
            if (error_.empty())
                error_ = std::string("connection closed: ") +
                         freerdp_get_last_error_string(freerdp_get_last_error(instance_->context));
            return false;
        }
        const Clock::time_point now = Clock::now();
        if (now >= deadline) return true;
        const bool quiet = drawn_ && now - lastActivity_ >= kQuiet;
        if (nextEvent_ < options_.script.size()) {
            if (scriptStarted_ || quiet) replayDue(now);
        } else if (quiet) {
            settled_ = true;
            return true;
        }
    }
}

// Sends every script event whose time has come; a wait postpones the rest.
void Client::replayDue(Clock::time_point now) {
    if (!scriptStarted_) scriptStarted_ = true, nextEventAt_ = now;
    rdpInput *input = instance_->input;
    while (nextEvent_ < options_.script.size() && now >= nextEventAt_) {
        const InputEvent &e = options_.script[nextEvent_++];
        if (e.kind == InputEvent::kWait) nextEventAt_ = now + std::chrono::milliseconds(e.code);
        else if (e.kind == InputEvent::kKey) freerdp_input_send_keyboard_event_ex(input, e.down, e.code);
        else freerdp_input_send_mouse_event(input, uint16_t(e.code), e.x, e.y);
    }
    lastActivity_ = now;
}

}  // namespace rdpsnap
