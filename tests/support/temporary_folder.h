/**
 * @file temporary_folder.h
 * A temporary folder, removed at the end of the test.
 */
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

class TemporaryFolder {
  public:
    TemporaryFolder() {
        char name[] = "/tmp/vdevice-test-XXXXXX";
        path_ = mkdtemp(name);
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    [[nodiscard]] const std::string &path() const { return path_; }

  private:
    std::string path_;
};
