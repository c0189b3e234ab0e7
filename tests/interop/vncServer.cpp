#include "vncServer.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

namespace {

void quiet(const char *, ...) {}

int freeLoopbackPort() {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof a;
    int port = 0;
    if (fd >= 0 && bind(fd, reinterpret_cast<sockaddr *>(&a), sizeof a) == 0 &&
        getsockname(fd, reinterpret_cast<sockaddr *>(&a), &length) == 0)
        port = ntohs(a.sin_port);
    if (fd >= 0) close(fd);
    return port;
}

void publish(const kit::Picture &from, kit::Picture &to) {
    for (size_t i = 0; i < from.pixels.size(); ++i) to.pixels[i] = from.pixels[i] & 0xffffff;
}

}  // namespace

bool VncServer::start(const kit::Picture &picture) {
    rfbLog = rfbErr = quiet;
    content_ = served_ = picture;
    publish(content_, served_);
    for (int attempt = 0; attempt < 5 && screen_ == nullptr; ++attempt) {
        int argc = 1;
        char name[] = "ui32-interop", *argv[] = {name, nullptr};
        rfbScreenInfoPtr s = rfbGetScreen(&argc, argv, picture.width, picture.height, 8, 3, 4);
        if (s == nullptr) return false;
        s->serverFormat.redShift = 16;  // words 0x00RRGGBB
        s->serverFormat.greenShift = 8;
        s->serverFormat.blueShift = 0;
        s->frameBuffer = reinterpret_cast<char *>(served_.pixels.data());
        s->autoPort = FALSE;
        s->port = freeLoopbackPort();
        s->ipv6port = s->httpPort = 0;
        s->listenInterface = htonl(INADDR_LOOPBACK);
        s->alwaysShared = TRUE;
        s->deferUpdateTime = 0;
        s->cursor = nullptr;  // the pictures sent are the frame buffer exactly
        rfbInitServer(s);
        if (s->port > 0 && s->listenSock != RFB_INVALID_SOCKET) screen_ = s, port_ = s->port;
        else rfbScreenCleanup(s);  // the port was taken meanwhile
    }
    if (screen_ == nullptr) return false;
    thread_ = std::thread([this] {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(120);
        while (!stopping_ && std::chrono::steady_clock::now() < end) {
            {
                std::lock_guard<std::mutex> lock(mutex_);
                if (job_) job_(), job_ = nullptr, done_.notify_all();
            }
            rfbProcessEvents(screen_, 10000);
        }
    });
    return true;
}

bool VncServer::change(const std::function<void(kit::Picture &)> &draw, int32_t x, int32_t y, int32_t w, int32_t h) {
    std::unique_lock<std::mutex> lock(mutex_);
    job_ = [&] {
        draw(content_);
        publish(content_, served_);
        rfbMarkRectAsModified(screen_, x, y, x + w, y + h);
    };
    if (done_.wait_for(lock, std::chrono::seconds(10), [this] { return !job_; })) return true;
    job_ = nullptr;
    return false;
}

void VncServer::stop() {
    if (screen_ == nullptr) return;
    stopping_ = true;
    if (thread_.joinable()) thread_.join();
    rfbShutdownServer(screen_, TRUE);
    rfbScreenCleanup(screen_);
    screen_ = nullptr;
}
