#include "vnc_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdarg>

namespace interop {

namespace {

// The server stops by itself after this long, whatever the test does.
constexpr auto kLifetime = std::chrono::seconds(120);
constexpr auto kChangeTimeout = std::chrono::seconds(10);

void quiet(const char *, ...) {}

// A port that is free on the loopback interface right now.
int freeLoopbackPort() {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return 0;
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof a;
    int port = 0;
    if (bind(fd, reinterpret_cast<sockaddr *>(&a), sizeof a) == 0 &&
        getsockname(fd, reinterpret_cast<sockaddr *>(&a), &len) == 0)
        port = ntohs(a.sin_port);
    close(fd);
    return port;
}

}  // namespace

VncServer::~VncServer() { stop(); }

void VncServer::publish() {
    for (size_t i = 0; i < content_.pixels.size(); ++i) served_.pixels[i] = content_.pixels[i] & 0xffffff;
}

bool VncServer::start(const Picture &picture, std::string &error) {
    rfbLog = quiet;
    rfbErr = quiet;
    content_ = picture;
    served_ = Picture(picture.width, picture.height, 0);
    publish();
    for (int attempt = 0; attempt < 5 && screen_ == nullptr; ++attempt) {
        int argc = 1;
        char name[] = "ui32-interop";
        char *argv[] = {name, nullptr};
        rfbScreenInfoPtr screen = rfbGetScreen(&argc, argv, picture.width, picture.height, 8, 3, 4);
        if (screen == nullptr) break;
        // Frame buffer words 0x00RRGGBB: red at bit 16, blue at bit 0.
        screen->serverFormat.redShift = 16;
        screen->serverFormat.greenShift = 8;
        screen->serverFormat.blueShift = 0;
        screen->frameBuffer = reinterpret_cast<char *>(served_.pixels.data());
        screen->desktopName = "ui32 interop";
        screen->autoPort = FALSE;
        screen->port = freeLoopbackPort();
        screen->ipv6port = 0;
        screen->httpPort = 0;
        screen->listenInterface = htonl(INADDR_LOOPBACK);
        screen->alwaysShared = TRUE;
        screen->deferUpdateTime = 0;
        // No cursor drawn into the pictures sent: they must equal the frame
        // buffer exactly.
        screen->cursor = nullptr;
        rfbInitServer(screen);
        if (screen->port > 0 && screen->listenSock != RFB_INVALID_SOCKET) {
            screen_ = screen;
            port_ = screen->port;
        } else {
            rfbScreenCleanup(screen);  // the port was taken meanwhile: try another
        }
    }
    if (screen_ == nullptr) {
        error = "the VNC server could not listen on a loopback port";
        return false;
    }
    stopping_ = false;
    thread_ = std::thread([this] { run(); });
    return true;
}

void VncServer::run() {
    const auto end = std::chrono::steady_clock::now() + kLifetime;
    while (!stopping_ && std::chrono::steady_clock::now() < end) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (job_) {
                job_();
                job_ = nullptr;
                jobDone_ = true;
                done_.notify_all();
            }
        }
        rfbProcessEvents(screen_, 10000);
    }
}

bool VncServer::change(const std::function<void(Picture &)> &draw, int32_t x, int32_t y, int32_t w, int32_t h) {
    std::unique_lock<std::mutex> lock(mutex_);
    jobDone_ = false;
    job_ = [&] {
        draw(content_);
        publish();
        rfbMarkRectAsModified(screen_, x, y, x + w, y + h);
    };
    if (done_.wait_for(lock, kChangeTimeout, [this] { return jobDone_; })) return true;
    job_ = nullptr;  // it refers to `draw`, which is about to go
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

}  // namespace interop
