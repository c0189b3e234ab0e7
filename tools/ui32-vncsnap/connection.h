// A TCP connection with a read buffer and a time limit on every wait.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vncsnap {

class Connection {
public:
    Connection() = default;
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    // Connects to host:port ("host:port" or "[v6 address]:port"); every later
    // wait for the peer gives up after `timeoutMs`.
    bool open(const std::string &hostPort, int timeoutMs);
    void close();

    // Exactly n bytes, or false (closed, timed out) with error() set.
    bool read(void *out, size_t n);
    bool readU8(uint8_t &v);
    bool readU16(uint16_t &v);  // big-endian, as RFB sends them
    bool readU32(uint32_t &v);
    bool skip(size_t n);

    // Makes at least n bytes available in the buffer (growing it if needed).
    bool ensure(size_t n);
    // Receives at least one more byte into the buffer.
    bool receiveMore();
    // The buffered bytes not yet consumed.
    const uint8_t *data() const { return buffer_.data() + start_; }
    size_t buffered() const { return end_ - start_; }
    void consume(size_t n) { start_ += n; }

    bool write(const void *data, size_t n);

    const std::string &error() const { return error_; }

private:
    bool fail(const std::string &what);
    void compact();

    int fd_ = -1;
    int timeoutMs_ = 10000;
    std::vector<uint8_t> buffer_ = std::vector<uint8_t>(64 * 1024);
    size_t start_ = 0, end_ = 0;
    std::string error_;
};

}  // namespace vncsnap
