// The RDP connection: FreeRDP 2's client library does the protocol
// (security negotiation, licensing, capability exchange, order parsing);
// its GDI is never started.  Capabilities announce only what ui32 draws,
// every update and order goes to the Mapper, and the loop ends once the
// desktop has settled.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "caches.h"
#include "canvas.h"
#include "mapping.h"
#include "script.h"

struct rdp_freerdp;
struct rdp_context;
typedef struct rdp_context rdpContext;

namespace rdpsnap {

struct Options {
    std::string host;
    uint16_t port = 3389;
    std::string user, password;
    int timeoutSeconds = 30;
    int32_t width = 1024, height = 768;
    uint32_t bpp = 32;
    std::vector<InputEvent> script;
};

class Client {
public:
    Client(const UiDrawTable &table, Options options);
    virtual ~Client();
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;

    // Connects, draws until the desktop settles (or the time limit), then
    // disconnects.  False with error() set when the connection or the server
    // stream failed.
    bool run();

    const std::string &error() const { return error_; }
    bool settled() const { return settled_; }
    const Canvas &canvas() const { return canvas_; }
    const Mapper &mapper() const { return mapper_; }
    // Updates by kind, and orders by name, as received.
    const std::map<std::string, uint64_t> &updates() const { return updates_; }
    const std::map<std::string, uint64_t> &orders() const { return orders_; }

    // The client of a FreeRDP context created by this class.
    static Client &of(rdpContext *context);

    // Called by the FreeRDP callbacks (client.cpp).
    void preConnect();
    bool postConnect();
    enum Kind { kUpdate, kOrder };
    bool count(Kind kind, const char *name);
    bool mapped(bool ok);
    Mapper &mapping() { return mapper_; }
    Canvas &drawing() { return canvas_; }

protected:
    // Takes over FreeRDP's update callbacks once connected: here every
    // update and order goes to the Mapper.  A reference renderer in the
    // tests draws with FreeRDP's GDI instead, calling drew() as it paints.
    virtual bool attachDrawing();
    void drew();
    rdp_freerdp *instance() { return instance_; }

private:
    using Clock = std::chrono::steady_clock;
    bool loop();
    void replayDue(Clock::time_point now);

    Options options_;
    Canvas canvas_;
    Caches caches_;
    Mapper mapper_;
    rdp_freerdp *instance_ = nullptr;
    std::string error_;
    bool settled_ = false;
    bool drawn_ = false;
    std::map<std::string, uint64_t> updates_, orders_;
    Clock::time_point lastActivity_;
    size_t nextEvent_ = 0;
    bool scriptStarted_ = false;
    Clock::time_point nextEventAt_;
};

}  // namespace rdpsnap
