/*
 * Framing used on the Unix domain sockets between proxies and services.
 *
 * Every request and reply is one frame: a 16-byte header of four native-endian 32-bit words
 * followed by the marshalled parcel.
 *   request: magic 'HBTX', transaction code, flags, payload size
 *   reply:   magic 'HBRX', binder_status_t result, 0, payload size
 * Header plus payload never exceed kMaxFrameSize. A dump request carries the output descriptor
 * as SCM_RIGHTS ancillary data on its header, and no other frame or byte may carry one. Services
 * turn on SO_PASSCRED, so the kernel stamps every request with its sender's credentials.
 * One-way requests get no reply.
 */
#pragma once

#include <android-base/unique_fd.h>
#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>
#include <sys/types.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host_binder {

constexpr uint32_t kRequestMagic = B_PACK_CHARS('H', 'B', 'T', 'X');
constexpr uint32_t kReplyMagic = B_PACK_CHARS('H', 'B', 'R', 'X');

struct FrameHeader {
    uint32_t magic;
    uint32_t word;  // transaction code in requests, result in replies
    uint32_t flags;
    uint32_t size;
};
static_assert(sizeof(FrameHeader) == 16, "frame header is four words");

// The frame limit is sized for the largest replies the served interfaces produce:
//  - a text report of up to 524288 bytes (getVmallocDebug), which crosses as UTF-16: a status
//    word, a length word and (524288 + 1) * 2 bytes padded to a word;
//  - a list of 400 memory-statistics records (ProcMemStatRet): a status word, the result, the
//    parcelable size and the list length, then per record a presence word, a size word, a
//    name of at most 16 characters (a length word and 17 UTF-16 units, padded) and 18 words of
//    fields.
// The larger of the two, rounded up to 64 KiB, leaves room for any smaller reply.
constexpr size_t kLargestTextReply = 4 + 4 + (((524288 + 1) * 2 + 3) & ~size_t{3});
constexpr size_t kLargestRecordListReply = 4 * 4 + 400 * (4 + 4 + (4 + 36) + 18 * 4);
constexpr size_t kMaxPayloadSize =
    (std::max(kLargestTextReply, kLargestRecordListReply) + 0xffff) & ~size_t{0xffff};
constexpr size_t kMaxFrameSize = sizeof(FrameHeader) + kMaxPayloadSize;

enum class ReadResult {
    kOk,
    kClosed,  // orderly end of stream before the first byte
    kFailed,  // error, timeout or end of stream part way through; errno tells which
};

// When given, an operation fails once this passes, however slowly the peer keeps trickling.
using Deadline = std::optional<std::chrono::steady_clock::time_point>;

// Sends header and payload; passFd, when not -1, rides along with the header. Never raises
// SIGPIPE.
bool sendFrame(int socket, const FrameHeader& header, const uint8_t* payload, size_t size,
               int passFd = -1, Deadline deadline = std::nullopt);

// Reads exactly size bytes from a socket that never sends descriptors; any that arrive are
// closed.
ReadResult readExact(int socket, void* data, size_t size);

// Reads one reply frame. A frame that is not a reply or exceeds the limits fails with errno
// EPROTO, and a reply cut short with EIO.
ReadResult readReply(int socket, FrameHeader* header, std::vector<uint8_t>* payload);

// Connects a blocking stream socket to path; returns an invalid fd with errno set on failure.
android::base::unique_fd connectToSocket(const std::string& path);

// The arguments of a dump request: a count followed by that many strings.
binder_status_t writeDumpArgs(AParcel* parcel, const char** args, uint32_t count);
binder_status_t readDumpArgs(const AParcel* parcel, std::vector<std::string>* args);

}  // namespace host_binder
