#include "wire.h"

#include <errno.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include "binder_internal.h"

namespace host_binder {

namespace {

// Waits until fd is ready for events or the deadline passes.
bool waitReady(int fd, short events, const Deadline& deadline) {
    if (!deadline.has_value()) return true;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            *deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            errno = ETIMEDOUT;
            return false;
        }
        pollfd p = {fd, events, 0};
        int ready = poll(&p, 1, static_cast<int>(left.count()));
        if (ready > 0) return true;
        if (ready < 0 && errno != EINTR) return false;
    }
}

// With a deadline, sends must not block past it, so they only take what fits now.
int sendFlags(const Deadline& deadline) {
    return MSG_NOSIGNAL | (deadline.has_value() ? MSG_DONTWAIT : 0);
}

// Waits only when a send found no room, so the common case costs one call.
bool sendAll(int socket, const uint8_t* data, size_t size, const Deadline& deadline) {
    while (size > 0) {
        ssize_t sent = TEMP_FAILURE_RETRY(send(socket, data, size, sendFlags(deadline)));
        if (sent < 0 && errno == EAGAIN) {
            if (!waitReady(socket, POLLOUT, deadline)) return false;
            continue;
        }
        if (sent <= 0) return false;
        data += sent;
        size -= static_cast<size_t>(sent);
    }
    return true;
}

}  // namespace

bool sendFrame(int socket, const FrameHeader& header, const uint8_t* payload, size_t size,
               int passFd, Deadline deadline) {
    iovec iov[2] = {{const_cast<FrameHeader*>(&header), sizeof(header)},
                    {const_cast<uint8_t*>(payload), size}};
    msghdr msg = {};
    msg.msg_iov = iov;
    msg.msg_iovlen = size > 0 ? 2 : 1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    if (passFd >= 0) {
        msg.msg_control = control;
        msg.msg_controllen = sizeof(control);
        cmsghdr* cmsg = CMSG_FIRSTHDR(&msg);
        cmsg->cmsg_level = SOL_SOCKET;
        cmsg->cmsg_type = SCM_RIGHTS;
        cmsg->cmsg_len = CMSG_LEN(sizeof(int));
        memcpy(CMSG_DATA(cmsg), &passFd, sizeof(int));
    }
    ssize_t sent;
    for (;;) {
        sent = TEMP_FAILURE_RETRY(sendmsg(socket, &msg, sendFlags(deadline)));
        if (sent >= 0 || errno != EAGAIN) break;
        if (!waitReady(socket, POLLOUT, deadline)) return false;
    }
    if (sent < 0) return false;
    // The descriptor went with the first byte; the rest is plain data.
    const size_t total = sizeof(header) + size;
    size_t done = static_cast<size_t>(sent);
    if (done < sizeof(header)) {
        if (!sendAll(socket, reinterpret_cast<const uint8_t*>(&header) + done,
                     sizeof(header) - done, deadline)) {
            return false;
        }
        done = sizeof(header);
    }
    return sendAll(socket, payload + (done - sizeof(header)), total - done, deadline);
}

ReadResult readExact(int socket, void* data, size_t size) {
    auto* out = static_cast<uint8_t*>(data);
    size_t done = 0;
    while (done < size) {
        iovec iov = {out + done, size - done};
        msghdr msg = {};
        msg.msg_iov = &iov;
        msg.msg_iovlen = 1;
        // Room for one stray descriptor; the kernel closes any beyond what fits.
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
        msg.msg_control = control;
        msg.msg_controllen = sizeof(control);
        ssize_t n = TEMP_FAILURE_RETRY(recvmsg(socket, &msg, MSG_CMSG_CLOEXEC));
        if (n < 0) return ReadResult::kFailed;
        for (cmsghdr* cmsg = CMSG_FIRSTHDR(&msg); cmsg != nullptr; cmsg = CMSG_NXTHDR(&msg, cmsg)) {
            if (cmsg->cmsg_level != SOL_SOCKET || cmsg->cmsg_type != SCM_RIGHTS) continue;
            const size_t count = (cmsg->cmsg_len - CMSG_LEN(0)) / sizeof(int);
            for (size_t i = 0; i < count; ++i) {
                int fd;
                memcpy(&fd, CMSG_DATA(cmsg) + i * sizeof(int), sizeof(int));
                close(fd);
            }
        }
        if (n == 0) return done == 0 ? ReadResult::kClosed : ReadResult::kFailed;
        done += static_cast<size_t>(n);
    }
    return ReadResult::kOk;
}

ReadResult readReply(int socket, FrameHeader* header, std::vector<uint8_t>* payload) {
    // The service sends nothing unasked, so the first read may take whatever has arrived.
    uint8_t first[4096];
    size_t got = 0;
    while (got < sizeof(FrameHeader)) {
        // Without room for ancillary data, any descriptor sent along is closed by the kernel.
        const ssize_t n = TEMP_FAILURE_RETRY(recv(socket, first + got, sizeof(first) - got, 0));
        if (n <= 0 && got > 0) errno = EIO;  // part of a reply came: the request ran
        if (n < 0) return ReadResult::kFailed;
        if (n == 0) return got == 0 ? ReadResult::kClosed : ReadResult::kFailed;
        got += static_cast<size_t>(n);
    }
    memcpy(header, first, sizeof(FrameHeader));
    const size_t early = got - sizeof(FrameHeader);
    if (header->magic != kReplyMagic || header->size > kMaxPayloadSize || early > header->size) {
        errno = EPROTO;
        return ReadResult::kFailed;
    }
    payload->resize(header->size);
    if (early > 0) memcpy(payload->data(), first + sizeof(FrameHeader), early);
    if (early == header->size) return ReadResult::kOk;
    if (readExact(socket, payload->data() + early, header->size - early) == ReadResult::kOk) {
        return ReadResult::kOk;
    }
    errno = EIO;
    return ReadResult::kFailed;
}

android::base::unique_fd connectToSocket(const std::string& path) {
    sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    if (path.size() >= sizeof(addr.sun_path)) {
        errno = ENAMETOOLONG;
        return {};
    }
    memcpy(addr.sun_path, path.c_str(), path.size() + 1);
    android::base::unique_fd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!fd.ok()) return {};
    if (connect(fd.get(), reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0) return {};
    return fd;
}

binder_status_t writeDumpArgs(AParcel* parcel, const char** args, uint32_t count) {
    if (count > static_cast<uint32_t>(INT32_MAX)) return STATUS_BAD_VALUE;
    binder_status_t status = AParcel_writeInt32(parcel, static_cast<int32_t>(count));
    for (uint32_t i = 0; status == STATUS_OK && i < count; ++i) {
        const char* arg = args[i] == nullptr ? "" : args[i];
        status = AParcel_writeString(parcel, arg, static_cast<int32_t>(strlen(arg)));
    }
    return status;
}

binder_status_t readDumpArgs(const AParcel* parcel, std::vector<std::string>* args) {
    int32_t count;
    binder_status_t status = AParcel_readInt32(parcel, &count);
    if (status != STATUS_OK) return status;
    // Each argument takes at least one word.
    if (count < 0 || static_cast<size_t>(count) > parcel->data.size() / sizeof(int32_t)) {
        return STATUS_BAD_VALUE;
    }
    args->resize(static_cast<size_t>(count));
    for (std::string& arg : *args) {
        status = AParcel_readString(parcel, &arg, stdStringAllocator);
        if (status != STATUS_OK) return status;
    }
    return STATUS_OK;
}

}  // namespace host_binder
