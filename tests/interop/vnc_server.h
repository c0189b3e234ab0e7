// An in-process VNC server (Debian's LibVNCServer) on 127.0.0.1 serving a
// picture.  It runs on a thread of its own, which also carries out every
// change of the picture between its event rounds, so that the frame buffer is
// never written while an update is being encoded.  It stops by itself after
// a fixed time even if the test forgets it.
#pragma once

#include <rfb/rfb.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "pictures.h"

namespace interop {

class VncServer {
public:
    VncServer() = default;
    ~VncServer();
    VncServer(const VncServer &) = delete;
    VncServer &operator=(const VncServer &) = delete;

    // Starts serving `picture` on a free loopback port; false with `error`.
    bool start(const Picture &picture, std::string &error);
    void stop();
    int port() const { return port_; }
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

    // Runs `change` on the server thread between two event rounds, then
    // marks the rectangle (x, y, w, h) as modified; waits until done and
    // returns the picture as the server now serves it.  False on timeout.
    bool change(const std::function<void(Picture &)> &change, int32_t x, int32_t y, int32_t w, int32_t h);
    // The picture the clients see (colours only, bits 24-31 zero).
    const Picture &served() const { return served_; }

private:
    void run();
    void publish();

    rfbScreenInfoPtr screen_ = nullptr;
    int port_ = 0;
    Picture content_;  // what is drawn on
    Picture served_;   // the frame buffer: content_ without alpha
    std::thread thread_;
    std::atomic<bool> stopping_{false};
    std::mutex mutex_;
    std::condition_variable done_;
    std::function<void()> job_;
    bool jobDone_ = false;
};

}  // namespace interop
