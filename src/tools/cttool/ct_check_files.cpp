// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_check_files.h"

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "tools/cttool/ct_raw_input.h"

namespace CT::Tool {

namespace {

CheckedFile check_file(const std::string& name, std::uint64_t max_size, std::size_t limit) {
  CheckedFile file;
  file.name = name;
  RawInput input(max_size);
  if (input.load(name)) {
    file.result = Check::check(input.bytes(), {limit, input.archive_damage()});
  } else {
    file.failure = input.failure();
  }
  return file;
}

// Threads that take one file after the other, and the files that are done.
class Crew {
 public:
  Crew(const std::vector<std::string>& names, std::uint64_t max_size, std::size_t limit)
      : names_(names), max_size_(max_size), limit_(limit) {
    const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
    const std::size_t count = std::min(cores, names.size());
    for (std::size_t i = 0; i != count; ++i) threads_.emplace_back([this] { work(); });
  }
  ~Crew() {
    {
      const std::lock_guard lock(mutex_);
      is_over_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) thread.join();
  }
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;

  // Waits for the file of this number. Each is asked for once, in order.
  CheckedFile wait_for(std::size_t number) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return done_.contains(number); });
    CheckedFile file = std::move(done_.at(number));
    done_.erase(number);
    ++handed_out_;
    lock.unlock();
    changed_.notify_all();
    return file;
  }

 private:
  static constexpr std::size_t most_ahead = 64;

  void work() {
    std::unique_lock lock(mutex_);
    while (true) {
      changed_.wait(lock, [&] { return is_over_ || next_ < handed_out_ + most_ahead; });
      if (is_over_ || next_ == names_.size()) return;
      const std::size_t number = next_++;
      lock.unlock();
      CheckedFile file = check_file(names_[number], max_size_, limit_);
      lock.lock();
      done_.emplace(number, std::move(file));
      changed_.notify_all();
    }
  }

  const std::vector<std::string>& names_;
  std::uint64_t max_size_;
  std::size_t limit_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t next_ = 0;
  std::size_t handed_out_ = 0;
  bool is_over_ = false;
  std::map<std::size_t, CheckedFile> done_;
  std::vector<std::thread> threads_;
};

}  // namespace

void check_files(const std::vector<std::string>& names, std::uint64_t max_size, std::size_t limit,
                 const std::function<bool(const CheckedFile&)>& take) {
  if (names.size() == 1) {
    static_cast<void>(take(check_file(names.front(), max_size, limit)));
    return;
  }
  Crew crew(names, max_size, limit);
  for (std::size_t number = 0; number != names.size(); ++number) {
    if (!take(crew.wait_for(number))) break;
  }
}

}  // namespace CT::Tool
