#include "connection.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace vncsnap {

namespace {

// Splits "host:port" or "[address]:port".
bool splitHostPort(const std::string &hostPort, std::string &host, std::string &port) {
    if (!hostPort.empty() && hostPort[0] == '[') {
        const size_t close = hostPort.find(']');
        if (close == std::string::npos || close + 1 >= hostPort.size() || hostPort[close + 1] != ':') return false;
        host = hostPort.substr(1, close - 1);
        port = hostPort.substr(close + 2);
    } else {
        const size_t colon = hostPort.rfind(':');
        if (colon == std::string::npos || colon == 0) return false;
        host = hostPort.substr(0, colon);
        port = hostPort.substr(colon + 1);
    }
    return !port.empty() && port.find_first_not_of("0123456789") == std::string::npos;
}

// Waits until fd is ready for `events`; false on timeout.
bool waitFor(int fd, short events, int timeoutMs) {
    pollfd p{fd, events, 0};
    for (;;) {
        const int n = poll(&p, 1, timeoutMs);
        if (n < 0 && errno == EINTR) continue;
        return n > 0;
    }
}

}  // namespace

Connection::~Connection() { close(); }

void Connection::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

bool Connection::fail(const std::string &what) {
    error_ = what;
    return false;
}

bool Connection::open(const std::string &hostPort, int timeoutMs) {
    timeoutMs_ = timeoutMs;
    std::string host, port;
    if (!splitHostPort(hostPort, host, port)) return fail("expected HOST:PORT, got \"" + hostPort + "\"");
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (const int rc = getaddrinfo(host.c_str(), port.c_str(), &hints, &found); rc != 0)
        return fail(host + ": " + gai_strerror(rc));
    std::string why = "no address";
    for (addrinfo *a = found; a != nullptr && fd_ < 0; a = a->ai_next) {
        const int fd = socket(a->ai_family, a->ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, a->ai_protocol);
        if (fd < 0) continue;
        int rc = connect(fd, a->ai_addr, a->ai_addrlen);
        if (rc < 0 && errno == EINPROGRESS) {
            if (!waitFor(fd, POLLOUT, timeoutMs_)) {
                why = "connection timed out";
                ::close(fd);
                continue;
            }
            int soError = 0;
            socklen_t len = sizeof soError;
            getsockopt(fd, SOL_SOCKET, SO_ERROR, &soError, &len);
            errno = soError;
            rc = soError == 0 ? 0 : -1;
        }
        if (rc < 0) {
            why = std::strerror(errno);
            ::close(fd);
            continue;
        }
        const int one = 1;
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        fd_ = fd;
    }
    freeaddrinfo(found);
    if (fd_ < 0) return fail(why);
    return true;
}

void Connection::compact() {
    if (start_ == 0) return;
    std::memmove(buffer_.data(), buffer_.data() + start_, end_ - start_);
    end_ -= start_;
    start_ = 0;
}

bool Connection::receiveMore() {
    if (fd_ < 0) return fail("not connected");
    if (end_ == buffer_.size()) {
        compact();
        if (end_ == buffer_.size()) buffer_.resize(buffer_.size() * 2);
    }
    for (;;) {
        const ssize_t n = recv(fd_, buffer_.data() + end_, buffer_.size() - end_, 0);
        if (n > 0) {
            end_ += size_t(n);
            return true;
        }
        if (n == 0) return fail("the server closed the connection");
        if (errno == EINTR) continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK) return fail(std::string("receive: ") + std::strerror(errno));
        if (!waitFor(fd_, POLLIN, timeoutMs_)) return fail("timed out waiting for the server");
    }
}

bool Connection::ensure(size_t n) {
    if (buffered() >= n) return true;
    if (buffer_.size() - start_ < n) {
        compact();
        if (buffer_.size() < n) buffer_.resize(n);
    }
    while (buffered() < n)
        if (!receiveMore()) return false;
    return true;
}

bool Connection::read(void *out, size_t n) {
    auto *dst = static_cast<uint8_t *>(out);
    while (n > 0) {
        if (buffered() == 0 && !receiveMore()) return false;
        const size_t take = std::min(n, buffered());
        std::memcpy(dst, data(), take);
        consume(take);
        dst += take;
        n -= take;
    }
    return true;
}

bool Connection::skip(size_t n) {
    while (n > 0) {
        if (buffered() == 0 && !receiveMore()) return false;
        const size_t take = std::min(n, buffered());
        consume(take);
        n -= take;
    }
    return true;
}

bool Connection::readU8(uint8_t &v) { return read(&v, 1); }

bool Connection::readU16(uint16_t &v) {
    uint8_t b[2];
    if (!read(b, 2)) return false;
    v = uint16_t(b[0] << 8 | b[1]);
    return true;
}

bool Connection::readU32(uint32_t &v) {
    uint8_t b[4];
    if (!read(b, 4)) return false;
    v = uint32_t(b[0]) << 24 | uint32_t(b[1]) << 16 | uint32_t(b[2]) << 8 | b[3];
    return true;
}

bool Connection::write(const void *data, size_t n) {
    if (fd_ < 0) return fail("not connected");
    const auto *p = static_cast<const uint8_t *>(data);
    while (n > 0) {
        const ssize_t w = send(fd_, p, n, MSG_NOSIGNAL);
        if (w > 0) {
            p += w;
            n -= size_t(w);
            continue;
        }
        if (w < 0 && errno == EINTR) continue;
        if (w < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            if (!waitFor(fd_, POLLOUT, timeoutMs_)) return fail("timed out sending to the server");
            continue;
        }
        return fail(std::string("send: ") + std::strerror(errno));
    }
    return true;
}

}  // namespace vncsnap
