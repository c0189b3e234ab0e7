// An in-process VNC server (Debian's LibVNCServer) on 127.0.0.1 serving a
// picture.  Its thread carries out every change of the picture between event
// rounds, so the frame buffer is never written while an update is encoded;
// it stops by itself after two minutes whatever the test does.
#pragma once

#include <rfb/rfb.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "picture.h"

class VncServer {
public:
    ~VncServer() { stop(); }
    bool start(const kit::Picture &picture);  // on a free loopback port
    void stop();
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }
    // Runs `draw` on the server thread, marks (x, y, w, h) modified, waits.
    bool change(const std::function<void(kit::Picture &)> &draw, int32_t x, int32_t y, int32_t w, int32_t h);
    const kit::Picture &served() const { return served_; }  // colours only

private:
    rfbScreenInfoPtr screen_ = nullptr;
    int port_ = 0;
    kit::Picture content_, served_;
    std::thread thread_;
    std::atomic<bool> stopping_{false};
    std::mutex mutex_;
    std::condition_variable done_;
    std::function<void()> job_;
};
