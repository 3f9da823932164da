/*
 * A private service directory for one test: HOST_BINDER_DIR points at it while the object
 * lives.
 */
#pragma once

#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

class TempBinderDir {
  public:
    TempBinderDir() {
        char pattern[] = "/tmp/binder-test-XXXXXX";
        const char* created = mkdtemp(pattern);
        if (created != nullptr) {
            mPath = created;
            // Reachable by callers running under other uids.
            chmod(created, 0755);
            setenv("HOST_BINDER_DIR", created, 1);
        }
    }
    ~TempBinderDir() {
        unsetenv("HOST_BINDER_DIR");
        std::error_code ignored;
        if (!mPath.empty()) std::filesystem::remove_all(mPath, ignored);
    }
    TempBinderDir(const TempBinderDir&) = delete;
    TempBinderDir& operator=(const TempBinderDir&) = delete;

    bool ok() const { return !mPath.empty(); }
    const std::string& path() const { return mPath; }

  private:
    std::string mPath;
};
