/*
 * The daemon's log on a host: stderr, in the format liblog's host logger prints, except that each
 * line of a message gets a header of its own, as logcat shows it. Text a caller gets logged can
 * thus never pass for a line the daemon wrote.
 */
#pragma once

#include <android/log.h>
#include <stdio.h>
#include <time.h>
#include <unistd.h>

#include <string>
#include <string_view>

namespace host_logger {

// Appends message to out one line at a time, each after header and ended by a line break. A
// trailing line break ends the last line rather than starting an empty one.
inline void AppendLines(std::string_view header, std::string_view message, std::string* out) {
    if (!message.empty() && message.back() == '\n') message.remove_suffix(1);
    for (;;) {
        const size_t end = message.find('\n');
        out->append(header);
        out->append(message.substr(0, end));
        out->push_back('\n');
        if (end == std::string_view::npos) return;
        message.remove_prefix(end + 1);
    }
}

// An __android_logger_function. "TAG P MM-DD HH:MM:SS   PID   TID [FILE:LINE] " heads each line.
inline void StderrLogger(const __android_logger_data* data, const char* message) {
    constexpr char kPriorities[] = "XXVDIWEF";
    const char priority = data->priority >= 0 && data->priority <= ANDROID_LOG_FATAL
                              ? kPriorities[data->priority]
                              : 'F';
    const time_t now = time(nullptr);
    tm local = {};
    localtime_r(&now, &local);
    char timestamp[32];
    strftime(timestamp, sizeof(timestamp), "%m-%d %H:%M:%S", &local);
    char header[512];
    const char* tag = data->tag != nullptr ? data->tag : "nullptr";
    if (data->file != nullptr) {
        snprintf(header, sizeof(header), "%s %c %s %5d %5d %s:%u] ", tag, priority, timestamp,
                 getpid(), gettid(), data->file, data->line);
    } else {
        snprintf(header, sizeof(header), "%s %c %s %5d %5d ", tag, priority, timestamp, getpid(),
                 gettid());
    }
    std::string lines;
    AppendLines(header, message != nullptr ? message : "", &lines);
    // One write per message, so that messages of several threads never interleave.
    fwrite(lines.data(), 1, lines.size(), stderr);
}

}  // namespace host_logger
