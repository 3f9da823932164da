/*
 * Framing used on the Unix domain sockets between proxies and services.
 *
 * Every request and reply is one frame: a 16-byte header of four native-endian 32-bit words
 * followed by the marshalled parcel.
 *   request: magic 'HBTX', transaction code, flags, payload size
 *   reply:   magic 'HBRX', binder_status_t result, 0, payload size
 * Header plus payload never exceed kMaxFrameSize. A dump request carries the output descriptor
 * as SCM_RIGHTS ancillary data on its header. One-way requests get no reply.
 */
#pragma once

#include <android-base/unique_fd.h>
#include <android/binder_ibinder.h>
#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host_binder {

constexpr uint32_t kRequestMagic = B_PACK_CHARS('H', 'B', 'T', 'X');
constexpr uint32_t kReplyMagic = B_PACK_CHARS('H', 'B', 'R', 'X');
constexpr size_t kMaxFrameSize = 1024 * 1024;

struct FrameHeader {
    uint32_t magic;
    uint32_t word;  // transaction code in requests, result in replies
    uint32_t flags;
    uint32_t size;
};
static_assert(sizeof(FrameHeader) == 16, "frame header is four words");

constexpr size_t kMaxPayloadSize = kMaxFrameSize - sizeof(FrameHeader);

enum class ReadResult {
    kOk,
    kClosed,  // orderly end of stream before the first byte
    kFailed,  // error, timeout or end of stream part way through
};

// When given, an operation fails once this passes, however slowly the peer keeps trickling.
using Deadline = std::optional<std::chrono::steady_clock::time_point>;

// Sends header and payload; passFd, when not -1, rides along with the header. Never raises
// SIGPIPE.
bool sendFrame(int socket, const FrameHeader& header, const uint8_t* payload, size_t size,
               int passFd = -1, Deadline deadline = std::nullopt);

// Reads exactly size bytes. Descriptors received on the way are appended to fds when it is
// given, and closed otherwise.
ReadResult readExact(int socket, void* data, size_t size,
                     std::vector<android::base::unique_fd>* fds = nullptr,
                     Deadline deadline = std::nullopt);

// Connects a blocking stream socket to path; returns an invalid fd with errno set on failure.
android::base::unique_fd connectToSocket(const std::string& path);

}  // namespace host_binder
