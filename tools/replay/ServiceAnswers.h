// What the service answers while a log is played.

#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace replay {

// Thread safety: any thread, at any time.
class ServiceAnswers {
  public:
    // `always` is the answer to everything, whatever is set.
    explicit ServiceAnswers(std::optional<std::string> always);

    // Begins anew, with answers by key.
    void restart(std::map<std::string, std::string> answers);

    // The last answer to `key`; without one, the environment's, or "enabled".
    std::string of(const std::string& key) const;
    void set(const std::string& key, const std::string& answer);

    bool areFixed() const { return mAlways.has_value(); }

  private:
    const std::optional<std::string> mAlways;
    const std::string mOtherwise;
    mutable std::mutex mMutex;
    std::map<std::string, std::string> mAnswers;  // guarded by mMutex
};

}  // namespace replay
