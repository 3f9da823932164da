/*
 * The service side of the socket transport.
 *
 * Listeners, connections and a housekeeping timer share one epoll set, registered one-shot: a
 * thread that receives an event owns that source until it gives it back, so a connection is
 * handled by one thread at a time and its frame buffer needs no lock. Events carry a source id
 * rather than a pointer, so an event for a source closed in the meantime finds nothing.
 *
 * A thread reads whatever a connection has sent, without waiting, into the connection's own
 * buffer. Only a complete frame runs a transaction, on the thread that completed it, once a
 * counting gate lets it: at most the configured number run at the same time. A reply goes out
 * at once as far as the peer takes it; the rest waits in the connection for room. A slow,
 * silent or non-reading client therefore holds neither a thread nor a transaction slot.
 *
 * A dump's text is written into memory first and copied to the caller's descriptor the same way,
 * as far as it takes it now, the rest whenever it polls writable, until a deadline: a dump waits
 * for its reader in the connection, not on a thread.
 *
 * The timer closes connections that stay idle, or take too long to deliver a request or to take
 * a reply, and resumes accepting after the process ran out of descriptors. Connections are
 * capped per uid and in all, and the uids other than root and the daemon's own never get the last
 * of them, so the uids that administer the daemon always get in. A newcomer over a cap displaces
 * the oldest idle or half-sent connection of the uid holding the most in its way, whose client
 * simply reconnects.
 *
 * Refusals are logged at most once per uid and kind every few seconds, with how many there were,
 * so that a refused caller cannot flood the log.
 */
#include "server.h"

#include <android-base/logging.h>
#include <errno.h>
#include <limits.h>
#include <poll.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "binder_internal.h"
#include "host_binder.h"
#include "wire.h"

namespace host_binder {

namespace {

using android::base::unique_fd;
using Clock = std::chrono::steady_clock;

// How long a peer may take to take a whole reply, or a dump's output.
constexpr auto kReplyTimeout = std::chrono::seconds(5);
// How long a request may take to arrive, from its first byte to its last.
constexpr auto kFrameTimeout = std::chrono::seconds(10);
// Connections without a request for this long are closed.
constexpr auto kIdleTimeout = std::chrono::seconds(60);
// How often the timer looks for connections to close and listeners to resume.
constexpr auto kTick = std::chrono::milliseconds(250);
constexpr size_t kMaxConnections = 256;
constexpr size_t kMaxConnectionsPerUid = 64;
// Kept for root and the daemon's own uid: the other uids together never hold more than the rest.
constexpr size_t kReservedConnections = 64;
constexpr size_t kMaxOtherConnections = kMaxConnections - kReservedConnections;
// Refusals of a uid are reported at most this often.
constexpr auto kRefusalReportInterval = std::chrono::seconds(5);
// Uids with refusals tracked at once; refusals of any further uid are counted together.
constexpr size_t kMaxRefusedUids = 256;
// A request's buffer grows by this much at a time, as its bytes arrive.
constexpr size_t kReadChunk = 64 * 1024;

struct CallerPolicy {
    std::mutex mutex;
    std::vector<std::pair<uid_t, uid_t>> ranges;
};

CallerPolicy& callerPolicy() {
    static CallerPolicy* policy = new CallerPolicy;
    return *policy;
}

// Root and the daemon's own uid: the uids that administer the daemon.
bool privilegedUid(uid_t uid) {
    return uid == 0 || uid == geteuid();
}

// Logs refusals of one kind, at most once per uid every kRefusalReportInterval: the first at once,
// later ones as a count when the interval is over.
class RefusalLog {
  public:
    // As in "refused a connection" and "refused 3 connections".
    RefusalLog(const char* one, const char* many) : mOne(one), mMany(many) {}

    void refused(uid_t uid, Clock::time_point now) {
        std::lock_guard<std::mutex> lock(mMutex);
        if (mUids.size() >= kMaxRefusedUids && mUids.count(uid) == 0) uid = kOtherUids;
        auto [it, first] = mUids.try_emplace(uid);
        if (first) {
            it->second.reported = now;
            report(uid, 1, false);
        } else {
            ++it->second.unreported;
            reportDueLocked(it->first, &it->second, now);
        }
    }

    // Reports the counts whose interval is over and forgets uids with nothing left to report.
    void flush(Clock::time_point now) {
        std::lock_guard<std::mutex> lock(mMutex);
        for (auto it = mUids.begin(); it != mUids.end();) {
            if (now - it->second.reported < kRefusalReportInterval) {
                ++it;
            } else if (it->second.unreported == 0) {
                it = mUids.erase(it);
            } else {
                reportDueLocked(it->first, &it->second, now);
                ++it;
            }
        }
    }

  private:
    // Stands for every uid beyond kMaxRefusedUids.
    static constexpr uid_t kOtherUids = static_cast<uid_t>(-1);

    struct Refusals {
        Clock::time_point reported;
        uint64_t unreported = 0;
    };

    void reportDueLocked(uid_t uid, Refusals* refusals, Clock::time_point now) {
        if (now - refusals->reported < kRefusalReportInterval) return;
        report(uid, refusals->unreported, true);
        refusals->reported = now;
        refusals->unreported = 0;
    }

    void report(uid_t uid, uint64_t count, bool since) const {
        std::string who = uid == kOtherUids ? "other uids" : "uid " + std::to_string(uid);
        if (count == 1) {
            LOG(WARNING) << "binder: refused " << mOne << " from " << who
                         << (since ? " since the last report" : "");
        } else {
            LOG(WARNING) << "binder: refused " << count << " " << mMany << " from " << who
                         << " since the last report";
        }
    }

    const char* const mOne;
    const char* const mMany;
    std::mutex mMutex;
    std::map<uid_t, Refusals> mUids;
};

struct Source {
    enum class Kind { kListener, kConnection, kTimer };

    Kind kind;
    uint64_t id = 0;
    unique_fd fd;
    ndk::SpAIBinder binder;

    // Under the server's mutex.
    bool busy = false;    // a thread owns the source
    bool paused = false;  // a listener waiting for descriptors to free up
    Clock::time_point resumeAt;
    uid_t peerUid = 0;        // at connect time, for the caps
    bool privileged = false;  // peerUid is root or the daemon's own
    Clock::time_point lastActive;
    // Written by the owning thread, read under the mutex while nobody owns the source.
    bool midFrame = false;
    Clock::time_point frameStarted;

    // Only touched by the owning thread: the request being read.
    FrameHeader header = {};
    size_t headerRead = 0;
    std::vector<uint8_t> payload;
    size_t payloadRead = 0;
    unique_fd passedFd;
    ucred sender = {};

    // The part of a reply the peer has not taken yet, sent as it makes room. Only the owning
    // thread touches it; `sending` and its deadline are read like midFrame.
    std::vector<uint8_t> unsent;
    size_t unsentDone = 0;
    bool sending = false;
    bool closeWhenSent = false;
    Clock::time_point sendDeadline;

    // A dump's text on its way to the caller's descriptor, which polls writable when it has room;
    // the reply follows once it is all there. Touched like the reply above; `dumping` shares its
    // deadline.
    bool dumping = false;
    bool dumpOutArmed = false;  // dumpOut is in the epoll set, under this source's id
    bool dumpOneway = false;
    unique_fd dumpOut;
    unique_fd dumpText;
    off_t dumpCopied = 0;
    binder_status_t dumpStatus = STATUS_OK;
};

class Server {
  public:
    Server() : mEpoll(epoll_create1(EPOLL_CLOEXEC)) {
        if (!mEpoll.ok()) PLOG(ERROR) << "binder: epoll_create1";
        // A peer that goes away must cost a failed write, never the process.
        signal(SIGPIPE, SIG_IGN);
        auto timer = std::make_unique<Source>();
        timer->kind = Source::Kind::kTimer;
        timer->fd.reset(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
        const auto tick = std::chrono::duration_cast<std::chrono::nanoseconds>(kTick).count();
        const itimerspec spec = {{0, tick}, {0, tick}};
        if (!timer->fd.ok() || timerfd_settime(timer->fd.get(), 0, &spec, nullptr) != 0) {
            PLOG(ERROR) << "binder: housekeeping timer";
            return;
        }
        add(std::move(timer));
    }

    void addListener(unique_fd fd, AIBinder* binder) {
        auto source = std::make_unique<Source>();
        source->kind = Source::Kind::kListener;
        source->fd = std::move(fd);
        AIBinder_incStrong(binder);
        source->binder.set(binder);
        add(std::move(source));
    }

    void setMaxRunning(uint32_t count) {
        std::lock_guard<std::mutex> lock(mGateMutex);
        mMaxRunning = count;
        mGateChanged.notify_all();
    }

    void serve();

  private:
    enum class Progress { kFrame, kWait, kClose };

    // Holds one of the transaction slots for its lifetime.
    class TransactionSlot {
      public:
        explicit TransactionSlot(Server& server) : mServer(server) {
            std::unique_lock<std::mutex> lock(mServer.mGateMutex);
            mServer.mGateChanged.wait(lock,
                                      [this] { return mServer.mRunning < mServer.mMaxRunning; });
            ++mServer.mRunning;
        }
        ~TransactionSlot() {
            std::lock_guard<std::mutex> lock(mServer.mGateMutex);
            --mServer.mRunning;
            mServer.mGateChanged.notify_one();
        }
        TransactionSlot(const TransactionSlot&) = delete;
        TransactionSlot& operator=(const TransactionSlot&) = delete;

      private:
        Server& mServer;
    };

    void add(std::unique_ptr<Source> source);
    Source* claim(uint64_t id);
    void giveBack(Source* source);
    void remove(Source* source);
    bool rearmLocked(Source* source);
    // Takes a connection out of the tables; the caller closes it outside the lock.
    std::unique_ptr<Source> eraseLocked(uint64_t id);
    // The connection to close to make room for another: among the uids that pass `among`, the
    // one holding the most connections gives up its oldest idle or half-sent one. Null when no
    // such connection can be closed.
    template <typename Among>
    Source* victimLocked(Among among);
    // Makes room for one more connection of uid, or says there is none.
    bool makeRoomLocked(uid_t uid, std::vector<std::unique_ptr<Source>>* evicted);

    void acceptConnections(Source* listener);
    void housekeeping(Source* timer);
    // False when the connection is to be closed.
    bool serviceConnection(Source* connection);
    Progress readFrame(Source* connection);
    bool runFrame(Source* connection);
    // Sends what the peer takes now and keeps the rest for later; false to close.
    bool sendReply(Source* connection, const FrameHeader& header, const uint8_t* data, size_t size,
                   bool thenClose);
    bool sendUnsent(Source* connection);
    binder_status_t transact(Source* connection, AParcel* reply);
    binder_status_t dump(Source* connection, const AParcel* in);
    // Copies what the caller's descriptor takes now of a dump, and replies once all is there or
    // the copy failed; false to close.
    bool copyDump(Source* connection);
    bool finishDump(Source* connection, binder_status_t status);

    unique_fd mEpoll;

    std::mutex mMutex;
    std::unordered_map<uint64_t, std::unique_ptr<Source>> mSources;
    std::map<uid_t, size_t> mConnectionsPerUid;
    size_t mConnections = 0;
    size_t mOtherConnections = 0;  // of uids other than root and the daemon's own
    uint64_t mNextId = 1;

    std::mutex mGateMutex;
    std::condition_variable mGateChanged;
    uint32_t mRunning = 0;
    uint32_t mMaxRunning = 1;

    RefusalLog mRefusedConnections{"a connection", "connections"};
    RefusalLog mRefusedCalls{"a call", "calls"};
    RefusalLog mConnectionsOverCaps{"a connection over the connection caps",
                                    "connections over the connection caps"};
};

Server& server() {
    // Never destroyed: pool threads may still be running when the process exits.
    static Server* instance = new Server;
    return *instance;
}

void Server::add(std::unique_ptr<Source> source) {
    epoll_event event = {};
    event.events = EPOLLIN | EPOLLONESHOT;
    std::lock_guard<std::mutex> lock(mMutex);
    source->id = mNextId++;
    event.data.u64 = source->id;
    if (epoll_ctl(mEpoll.get(), EPOLL_CTL_ADD, source->fd.get(), &event) != 0) {
        PLOG(ERROR) << "binder: epoll_ctl add";
        // Counted in, so counted out the usual way.
        mSources.emplace(source->id, std::move(source));
        std::unique_ptr<Source> failed = eraseLocked(mNextId - 1);
        return;
    }
    mSources.emplace(source->id, std::move(source));
}

Source* Server::claim(uint64_t id) {
    std::lock_guard<std::mutex> lock(mMutex);
    auto it = mSources.find(id);
    if (it == mSources.end() || it->second->busy) return nullptr;
    it->second->busy = true;
    return it->second.get();
}

bool Server::rearmLocked(Source* source) {
    epoll_event event = {};
    event.events = (source->sending || source->dumping ? EPOLLOUT : EPOLLIN) | EPOLLONESHOT;
    event.data.u64 = source->id;
    if (source->dumping) {
        // The connection itself stays disarmed until the dump's reply is due.
        const int op = source->dumpOutArmed ? EPOLL_CTL_MOD : EPOLL_CTL_ADD;
        if (epoll_ctl(mEpoll.get(), op, source->dumpOut.get(), &event) != 0) {
            PLOG(ERROR) << "binder: epoll_ctl for a dump";
            return false;
        }
        source->dumpOutArmed = true;
        return true;
    }
    if (epoll_ctl(mEpoll.get(), EPOLL_CTL_MOD, source->fd.get(), &event) != 0) {
        PLOG(ERROR) << "binder: epoll_ctl mod";
        return false;
    }
    return true;
}

void Server::giveBack(Source* source) {
    std::unique_ptr<Source> failed;
    std::lock_guard<std::mutex> lock(mMutex);
    source->busy = false;
    source->lastActive = Clock::now();
    // Re-armed under the lock, so that nobody closes the descriptor in between and a new
    // connection inherits its number.
    if (source->paused || rearmLocked(source)) return;
    failed = eraseLocked(source->id);
}

void Server::remove(Source* source) {
    std::unique_ptr<Source> owned;
    std::lock_guard<std::mutex> lock(mMutex);
    owned = eraseLocked(source->id);
}

std::unique_ptr<Source> Server::eraseLocked(uint64_t id) {
    auto it = mSources.find(id);
    if (it == mSources.end()) return nullptr;
    std::unique_ptr<Source> owned = std::move(it->second);
    mSources.erase(it);
    if (owned->dumpOutArmed) {
        // The caller shares the dump's descriptor, so closing ours would not take it out.
        epoll_ctl(mEpoll.get(), EPOLL_CTL_DEL, owned->dumpOut.get(), nullptr);
    }
    if (owned->kind == Source::Kind::kConnection) {
        --mConnections;
        if (!owned->privileged) --mOtherConnections;
        auto count = mConnectionsPerUid.find(owned->peerUid);
        if (--count->second == 0) mConnectionsPerUid.erase(count);
    }
    // Closing the descriptor also takes it out of the epoll set.
    return owned;
}

template <typename Among>
Source* Server::victimLocked(Among among) {
    Source* victim = nullptr;
    size_t victimHolds = 0;
    for (const auto& [id, source] : mSources) {
        // A connection running a call, or owing a reply or a dump, is left alone.
        if (source->kind != Source::Kind::kConnection || source->busy || source->sending ||
            source->dumping || !among(*source)) {
            continue;
        }
        const size_t holds = mConnectionsPerUid.find(source->peerUid)->second;
        if (victim == nullptr || holds > victimHolds ||
            (holds == victimHolds && source->lastActive < victim->lastActive)) {
            victim = source.get();
            victimHolds = holds;
        }
    }
    return victim;
}

bool Server::makeRoomLocked(uid_t uid, std::vector<std::unique_ptr<Source>>* evicted) {
    auto evict = [&](Source* victim) {
        if (victim == nullptr) return false;
        evicted->push_back(eraseLocked(victim->id));
        return true;
    };
    auto count = mConnectionsPerUid.find(uid);
    if (count != mConnectionsPerUid.end() && count->second >= kMaxConnectionsPerUid &&
        !evict(victimLocked([uid](const Source& s) { return s.peerUid == uid; }))) {
        return false;
    }
    if (!privilegedUid(uid) && mOtherConnections >= kMaxOtherConnections &&
        !evict(victimLocked([](const Source& s) { return !s.privileged; }))) {
        return false;
    }
    if (mConnections >= kMaxConnections &&
        !evict(victimLocked([](const Source&) { return true; }))) {
        return false;
    }
    return true;
}

void Server::serve() {
    for (;;) {
        epoll_event event;
        int count = epoll_wait(mEpoll.get(), &event, 1, -1);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            PLOG(ERROR) << "binder: epoll_wait";
            return;
        }
        if (count == 0) continue;
        Source* source = claim(event.data.u64);
        if (source == nullptr) continue;  // closed since the event was queued
        switch (source->kind) {
            case Source::Kind::kTimer:
                housekeeping(source);
                giveBack(source);
                break;
            case Source::Kind::kListener:
                acceptConnections(source);
                giveBack(source);
                break;
            case Source::Kind::kConnection:
                if (serviceConnection(source)) {
                    giveBack(source);
                } else {
                    remove(source);
                }
                break;
        }
    }
}

void Server::housekeeping(Source* timer) {
    uint64_t expirations;
    (void)!read(timer->fd.get(), &expirations, sizeof(expirations));
    const Clock::time_point now = Clock::now();
    mRefusedConnections.flush(now);
    mRefusedCalls.flush(now);
    mConnectionsOverCaps.flush(now);
    // Dumps whose readers took too long; this thread owns them until they have replied.
    std::vector<Source*> lateDumps;
    {
        std::vector<std::unique_ptr<Source>> closing;
        std::lock_guard<std::mutex> lock(mMutex);
        std::vector<uint64_t> expired;
        for (const auto& [id, source] : mSources) {
            if (source->busy) continue;
            if (source->kind == Source::Kind::kConnection && source->dumping) {
                if (now > source->sendDeadline) {
                    source->busy = true;
                    lateDumps.push_back(source.get());
                }
            } else if (source->kind == Source::Kind::kConnection) {
                const bool late = source->sending    ? now > source->sendDeadline
                                  : source->midFrame ? now - source->frameStarted > kFrameTimeout
                                                     : now - source->lastActive > kIdleTimeout;
                if (late) expired.push_back(id);
            } else if (source->paused && now >= source->resumeAt) {
                source->paused = false;
                if (!rearmLocked(source.get())) expired.push_back(id);
            }
        }
        for (uint64_t id : expired) closing.push_back(eraseLocked(id));
    }
    for (Source* connection : lateDumps) {
        if (finishDump(connection, STATUS_TIMED_OUT)) {
            giveBack(connection);
        } else {
            remove(connection);
        }
    }
}

void Server::acceptConnections(Source* listener) {
    for (;;) {
        unique_fd fd(accept4(listener->fd.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!fd.ok()) {
            if (errno == EINTR || errno == ECONNABORTED) continue;
            if (errno == EMFILE || errno == ENFILE) {
                // Out of descriptors: the uid holding the most connections gives an idle or
                // half-sent one up, else the listener waits for some to free up instead of
                // spinning on a backlog it cannot take.
                PLOG(WARNING) << "binder: cannot accept";
                std::unique_ptr<Source> victim;
                {
                    std::lock_guard<std::mutex> lock(mMutex);
                    Source* spare = victimLocked([](const Source&) { return true; });
                    if (spare != nullptr) {
                        victim = eraseLocked(spare->id);
                    } else {
                        listener->paused = true;
                        listener->resumeAt = Clock::now() + kTick;
                    }
                }
                if (victim != nullptr) continue;
            }
            return;  // EAGAIN: the backlog is empty
        }
        ucred cred = {};
        socklen_t length = sizeof(cred);
        if (getsockopt(fd.get(), SOL_SOCKET, SO_PEERCRED, &cred, &length) != 0) {
            PLOG(WARNING) << "binder: SO_PEERCRED";
            continue;
        }
        if (!callerAllowed(cred.uid)) {
            mRefusedConnections.refused(cred.uid, Clock::now());
            continue;
        }
        // Every request then comes with its sender's credentials.
        const int on = 1;
        if (setsockopt(fd.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)) != 0) {
            PLOG(WARNING) << "binder: SO_PASSCRED";
            continue;
        }
        auto source = std::make_unique<Source>();
        source->kind = Source::Kind::kConnection;
        source->fd = std::move(fd);
        source->binder = listener->binder;
        source->peerUid = cred.uid;
        source->privileged = privilegedUid(cred.uid);
        source->lastActive = Clock::now();
        std::vector<std::unique_ptr<Source>> evicted;
        bool admitted;
        {
            std::lock_guard<std::mutex> lock(mMutex);
            admitted = makeRoomLocked(cred.uid, &evicted);
            if (admitted) {
                ++mConnections;
                if (!source->privileged) ++mOtherConnections;
                ++mConnectionsPerUid[cred.uid];
            }
        }
        if (!admitted) {
            mConnectionsOverCaps.refused(cred.uid, Clock::now());
            continue;
        }
        add(std::move(source));
    }
}

bool Server::serviceConnection(Source* connection) {
    if (connection->dumping) return copyDump(connection);
    if (connection->sending) return sendUnsent(connection);
    switch (readFrame(connection)) {
        case Progress::kWait:
            return true;
        case Progress::kClose:
            return false;
        case Progress::kFrame:
            break;
    }
    const bool keep = runFrame(connection);
    connection->midFrame = false;
    connection->headerRead = 0;
    connection->payloadRead = 0;
    connection->passedFd.reset();
    connection->payload.clear();
    if (connection->payload.capacity() > kReadChunk) connection->payload.shrink_to_fit();
    // A re-armed registration reports at once anything already queued behind this frame.
    return keep;
}

Server::Progress Server::readFrame(Source* c) {
    for (;;) {
        // A read never goes past the header or the payload, so a descriptor that arrives is
        // known to have come with the header.
        const bool inHeader = c->headerRead < sizeof(FrameHeader);
        uint8_t* into;
        size_t want;
        if (inHeader) {
            into = reinterpret_cast<uint8_t*>(&c->header) + c->headerRead;
            want = sizeof(FrameHeader) - c->headerRead;
        } else {
            if (c->payloadRead == c->payload.size()) {
                c->payload.resize(std::min<size_t>(c->header.size, c->payloadRead + kReadChunk));
            }
            into = c->payload.data() + c->payloadRead;
            want = c->payload.size() - c->payloadRead;
        }
        iovec iov = {into, want};
        msghdr msg = {};
        msg.msg_iov = &iov;
        msg.msg_iovlen = 1;
        // Room for the credentials and for two descriptors, to see a second one arrive.
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred)) + CMSG_SPACE(2 * sizeof(int))];
        msg.msg_control = control;
        msg.msg_controllen = sizeof(control);
        const ssize_t n = recvmsg(c->fd.get(), &msg, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
        if (n < 0) {
            if (errno == EINTR) continue;
            return errno == EAGAIN || errno == EWOULDBLOCK ? Progress::kWait : Progress::kClose;
        }
        std::vector<unique_fd> fds;
        const ucred* sender = nullptr;
        for (cmsghdr* cmsg = CMSG_FIRSTHDR(&msg); cmsg != nullptr; cmsg = CMSG_NXTHDR(&msg, cmsg)) {
            if (cmsg->cmsg_level != SOL_SOCKET) continue;
            if (cmsg->cmsg_type == SCM_RIGHTS) {
                const size_t count = (cmsg->cmsg_len - CMSG_LEN(0)) / sizeof(int);
                for (size_t i = 0; i < count; ++i) {
                    int fd;
                    memcpy(&fd, CMSG_DATA(cmsg) + i * sizeof(int), sizeof(int));
                    fds.emplace_back(fd);
                }
            } else if (cmsg->cmsg_type == SCM_CREDENTIALS &&
                       cmsg->cmsg_len >= CMSG_LEN(sizeof(ucred))) {
                sender = reinterpret_cast<const ucred*>(CMSG_DATA(cmsg));
            }
        }
        // Descriptors that did not fit were dropped, so there were too many.
        if ((msg.msg_flags & MSG_CTRUNC) != 0 || n == 0 || sender == nullptr) {
            return Progress::kClose;
        }
        if (!fds.empty()) {
            if (!inHeader || fds.size() > 1 || c->passedFd.ok()) return Progress::kClose;
            c->passedFd = std::move(fds[0]);
        }
        if (c->headerRead == 0) {
            c->sender = *sender;
            c->midFrame = true;
            c->frameStarted = Clock::now();
        } else if (sender->pid != c->sender.pid || sender->uid != c->sender.uid ||
                   sender->gid != c->sender.gid) {
            return Progress::kClose;  // one request, one sender
        }
        if (inHeader) {
            c->headerRead += static_cast<size_t>(n);
            if (c->headerRead < sizeof(FrameHeader)) continue;
            if (c->header.magic != kRequestMagic) return Progress::kClose;
            if (c->header.size > kMaxPayloadSize) {
                // The payload cannot be skipped safely; say why and drop the connection.
                const FrameHeader error = {kReplyMagic, static_cast<uint32_t>(STATUS_BAD_VALUE), 0,
                                           0};
                return sendReply(c, error, nullptr, 0, true) ? Progress::kWait : Progress::kClose;
            }
        } else {
            c->payloadRead += static_cast<size_t>(n);
        }
        if (c->payloadRead == c->header.size) return Progress::kFrame;
    }
}

bool Server::runFrame(Source* connection) {
    binder_status_t status;
    ndk::ScopedAParcel reply(AParcel_create());
    const bool allowed = callerAllowed(connection->sender.uid);
    if (!allowed) {
        mRefusedCalls.refused(connection->sender.uid, Clock::now());
        status = STATUS_PERMISSION_DENIED;
    } else {
        status = transact(connection, reply.get());
        // A dump replies once its text has reached the caller.
        if (connection->dumping) return copyDump(connection);
    }
    if ((connection->header.flags & FLAG_ONEWAY) != 0) return allowed;

    const uint8_t* data = nullptr;
    size_t size = 0;
    if (status == STATUS_OK) {
        if (!reply.get()->objects.empty() || reply.get()->data.size() > kMaxPayloadSize) {
            // As a device's binder would when a reply does not fit its buffer.
            status = STATUS_FAILED_TRANSACTION;
        } else {
            data = reply.get()->data.data();
            size = reply.get()->data.size();
        }
    }
    const FrameHeader response = {kReplyMagic, static_cast<uint32_t>(status), 0,
                                  static_cast<uint32_t>(size)};
    return sendReply(connection, response, data, size, !allowed);
}

bool Server::sendReply(Source* c, const FrameHeader& header, const uint8_t* data, size_t size,
                       bool thenClose) {
    iovec iov[2] = {{const_cast<FrameHeader*>(&header), sizeof(header)},
                    {const_cast<uint8_t*>(data), size}};
    msghdr msg = {};
    msg.msg_iov = iov;
    msg.msg_iovlen = size > 0 ? 2 : 1;
    const ssize_t sent = TEMP_FAILURE_RETRY(sendmsg(c->fd.get(), &msg, MSG_DONTWAIT | MSG_NOSIGNAL));
    if (sent < 0 && errno != EAGAIN) return false;
    const size_t done = sent < 0 ? 0 : static_cast<size_t>(sent);
    if (done == sizeof(header) + size) return !thenClose;
    // A peer slow to take its reply must not hold this thread: keep the rest and send it from
    // the event loop as room appears, until a deadline.
    c->unsent.resize(sizeof(header) + size - done);
    uint8_t* out = c->unsent.data();
    if (done < sizeof(header)) {
        memcpy(out, reinterpret_cast<const uint8_t*>(&header) + done, sizeof(header) - done);
        out += sizeof(header) - done;
    }
    const size_t dataDone = done > sizeof(header) ? done - sizeof(header) : 0;
    if (size > dataDone) memcpy(out, data + dataDone, size - dataDone);
    c->unsentDone = 0;
    c->sending = true;
    c->closeWhenSent = thenClose;
    c->sendDeadline = Clock::now() + kReplyTimeout;
    return true;
}

bool Server::sendUnsent(Source* c) {
    while (c->unsentDone < c->unsent.size()) {
        const ssize_t sent =
            TEMP_FAILURE_RETRY(send(c->fd.get(), c->unsent.data() + c->unsentDone,
                                    c->unsent.size() - c->unsentDone, MSG_DONTWAIT | MSG_NOSIGNAL));
        if (sent < 0 && errno == EAGAIN) return true;
        if (sent <= 0) return false;
        c->unsentDone += static_cast<size_t>(sent);
    }
    c->sending = false;
    c->unsent.clear();
    c->unsent.shrink_to_fit();
    return !c->closeWhenSent;
}

binder_status_t Server::transact(Source* connection, AParcel* reply) {
    const FrameHeader& header = connection->header;
    if ((header.flags & ~static_cast<uint32_t>(FLAG_ONEWAY)) != 0) return STATUS_BAD_VALUE;
    const transaction_code_t code = header.word;
    // Only a dump request may carry a descriptor.
    if (code != kDumpTransaction && connection->passedFd.ok()) return STATUS_FDS_NOT_ALLOWED;

    ndk::ScopedAParcel in(AParcel_create());
    binder_status_t status =
        AParcel_unmarshal(in.get(), connection->payload.data(), connection->payload.size());
    if (status != STATUS_OK) return status;
    if (code == kDumpTransaction) return dump(connection, in.get());

    ScopedCallingIdentity identity(connection->sender.uid, connection->sender.pid);
    TransactionSlot slot(*this);
    return transactLocal(connection->binder.get(), code, in.get(), reply, header.flags);
}

binder_status_t Server::dump(Source* connection, const AParcel* in) {
    if (!connection->passedFd.ok()) return STATUS_BAD_VALUE;
    const uid_t uid = connection->sender.uid;
    if (!privilegedUid(uid)) return STATUS_PERMISSION_DENIED;
    std::vector<std::string> args;
    binder_status_t status = readDumpArgs(in, &args);
    if (status != STATUS_OK) return status;
    std::vector<const char*> argv;
    for (const std::string& arg : args) argv.push_back(arg.c_str());

    // The service writes into memory, at its own pace; the caller's descriptor then gets the
    // text as it takes it, so a reader that never reads holds neither a slot nor a thread.
    unique_fd text(memfd_create("binder-dump", MFD_CLOEXEC));
    if (!text.ok()) return STATUS_NO_MEMORY;
    {
        ScopedCallingIdentity identity(uid, connection->sender.pid);
        TransactionSlot slot(*this);
        status = AIBinder_dump(connection->binder.get(), text.get(), argv.data(),
                               static_cast<uint32_t>(argv.size()));
    }
    connection->dumping = true;
    connection->dumpOneway = (connection->header.flags & FLAG_ONEWAY) != 0;
    connection->dumpOut = std::move(connection->passedFd);
    connection->dumpText = std::move(text);
    connection->dumpCopied = 0;
    connection->dumpStatus = status;
    connection->sendDeadline = Clock::now() + kReplyTimeout;
    return STATUS_OK;
}

bool Server::copyDump(Source* c) {
    for (;;) {
        // What polls writable takes PIPE_BUF bytes without blocking, whether or not the
        // descriptor, which the caller shares, is in non-blocking mode.
        pollfd out = {c->dumpOut.get(), POLLOUT, 0};
        const int ready = TEMP_FAILURE_RETRY(poll(&out, 1, 0));
        if (ready < 0) return finishDump(c, STATUS_UNKNOWN_ERROR);
        if (ready == 0) return true;
        uint8_t buffer[PIPE_BUF];
        const ssize_t count =
            TEMP_FAILURE_RETRY(pread(c->dumpText.get(), buffer, sizeof(buffer), c->dumpCopied));
        if (count < 0) return finishDump(c, STATUS_UNKNOWN_ERROR);
        if (count == 0) return finishDump(c, c->dumpStatus);
        const ssize_t written =
            TEMP_FAILURE_RETRY(write(c->dumpOut.get(), buffer, static_cast<size_t>(count)));
        if (written < 0 && errno == EAGAIN) return true;
        if (written < 0 && errno == EPIPE) return finishDump(c, STATUS_DEAD_OBJECT);
        if (written <= 0) return finishDump(c, STATUS_UNKNOWN_ERROR);
        c->dumpCopied += written;
    }
}

bool Server::finishDump(Source* c, binder_status_t status) {
    if (c->dumpOutArmed) epoll_ctl(mEpoll.get(), EPOLL_CTL_DEL, c->dumpOut.get(), nullptr);
    c->dumpOutArmed = false;
    c->dumpOut.reset();
    c->dumpText.reset();
    c->dumping = false;
    if (c->dumpOneway) return true;
    const FrameHeader response = {kReplyMagic, static_cast<uint32_t>(status), 0, 0};
    return sendReply(c, response, nullptr, 0, false);
}

}  // namespace

void serveOnSocket(unique_fd listener, AIBinder* binder) {
    server().addListener(std::move(listener), binder);
}

void setMaxConcurrentTransactions(uint32_t count) {
    server().setMaxRunning(count);
}

bool callerAllowed(uid_t uid) {
    if (privilegedUid(uid)) return true;
    CallerPolicy& policy = callerPolicy();
    std::lock_guard<std::mutex> lock(policy.mutex);
    return std::any_of(policy.ranges.begin(), policy.ranges.end(), [uid](const auto& range) {
        return uid >= range.first && uid <= range.second;
    });
}

bool otherUidsAllowed() {
    CallerPolicy& policy = callerPolicy();
    std::lock_guard<std::mutex> lock(policy.mutex);
    return !policy.ranges.empty();
}

void allowCallerUids(uid_t first, uid_t last) {
    CallerPolicy& policy = callerPolicy();
    std::lock_guard<std::mutex> lock(policy.mutex);
    policy.ranges.emplace_back(first, last);
}

void serveForever() {
    server().serve();
}

}  // namespace host_binder
