// The opaque rectangle order, OpaqueRect (slot 5).
#include "dirtybuf.h"
#include "entry.h"
#include "fills.h"
#include "surface.h"
#include "ui.h"

void ui::opaqueRect(UiSurface *surface, const UiOpaqueRectOrder *order, const UiClipRect *clip) {
    UiRect r{order->left, order->top, order->width, order->height};
    translate(*surface, r.left, r.top);
    if (!clipToRect(r, *clip)) return;
    const uint32_t colour = colourOf(order->red, order->green, order->blue);
    if (!fillSolid(surface->image, r, &colour)) return;
    markDrawn(surface->dirty, r);
}
