// SPDX-License-Identifier: MIT
#include "php_like.h"

#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace CT::Bench {

namespace {

using Test::CheckpointDraft;
using Test::Fields;
using Test::Ref;
using Test::TraceBuilder;
namespace value = Test::value;

constexpr std::size_t class_count = 300;
constexpr std::size_t function_count = 2000;
constexpr std::size_t least_depth = 5;
constexpr std::size_t most_depth = 40;

class Request {
 public:
  explicit Request(TraceBuilder& trace) : trace_(trace) {
    describe();
    stamp(CheckpointDraft::startup(trace_.text("https://shop.example/basket?page=2"),
                                   trace_.text("/basket?page=2"), trace_.text("shop.example"),
                                   trace_.text("GET")));
  }

  // The depth walks towards one goal after the other.
  void run(std::size_t calls) {
    std::size_t goal = most_depth;
    while (calls != 0 || !open_.empty()) {
      if (calls == 0 || open_.size() > goal) {
        leave();
      } else {
        enter();
        --calls;
      }
      if (open_.size() == goal || below(8) == 0) goal = between(least_depth, most_depth);
    }
  }

  void end() { stamp(CheckpointDraft::shutdown()); }

 private:
  struct Function {
    Ref descriptor;
    Ref class_entry;  // 0 for a plain function
    Ref file;
  };

  std::size_t below(std::size_t limit) { return random_() % limit; }
  std::size_t between(std::size_t least, std::size_t most) {
    return least + below(most - least + 1);
  }

  void describe() {
    std::vector<Ref> classes;
    for (std::size_t i = 0; i != class_count; ++i) {
      const std::string name = "App\\Service\\Handler" + std::to_string(i);
      classes.push_back(trace_.klass({.name = name, .file = file_name(i), .line = 12}));
    }
    for (std::size_t i = 0; i != function_count; ++i) {
      const bool is_method = below(3) != 0;
      const bool is_user = is_method || below(2) == 0;
      const Ref class_entry = is_method ? classes[below(class_count)] : 0;
      const std::string name = (is_user ? "processRequest" : "array_walk_") + std::to_string(i);
      const std::string file = file_name(i);
      const auto line = static_cast<std::uint32_t>(between(1, 900));
      const Ref descriptor =
          trace_.function({.type = is_user ? Test::user_type : Test::internal_type,
                           .name = name,
                           .class_entry = class_entry,
                           .file = file,
                           .line = line});
      functions_.push_back({descriptor, class_entry, trace_.text(file)});
    }
  }

  static std::string file_name(std::size_t i) {
    return "/var/www/shop/src/Module" + std::to_string(i % class_count) + "/Controller.php";
  }

  // Adds a record with the common fields; time and memory move on.
  Ref stamp(CheckpointDraft checkpoint) {
    nanoseconds_ += between(200, 4000);
    memory_ += between(0, 4096);
    if (below(64) == 0) memory_ = first_memory;
    constexpr std::uint64_t second = 1'000'000'000;
    const Ref file = open_.empty() ? 0 : open_files_.back();
    return trace_.add(checkpoint
                          .time(1'700'000'000 + nanoseconds_ / second,
                                static_cast<std::uint32_t>(nanoseconds_ % second))
                          .memory(memory_)
                          .location(file, static_cast<std::uint32_t>(between(1, 900))));
  }

  void enter() {
    const Function& function = functions_[below(function_count)];
    std::vector<Fields> args;
    for (std::size_t left = below(5); left != 0; --left) args.push_back(any_value(function));
    CheckpointDraft call =
        function.class_entry != 0
            ? CheckpointDraft::method_call(function.descriptor, object(function), args)
            : CheckpointDraft::function_call(function.descriptor, args);
    open_.push_back(stamp(std::move(call)));
    open_files_.push_back(function.file);
  }

  void leave() {
    const Function& function = functions_[below(function_count)];
    const Fields result = below(2) == 0 ? value::null() : any_value(function);
    const Ref call = open_.back();
    stamp(CheckpointDraft::function_return(call, result));
    open_.pop_back();
    open_files_.pop_back();
  }

  Fields object(const Function& function) {
    return value::object(function.class_entry, static_cast<std::uint32_t>(between(1, 500)));
  }

  // Most strings are short, a few have up to 200 bytes.
  Fields text() {
    static constexpr std::string_view words =
        "SELECT id, name, price FROM product WHERE shop = ? AND visible = 1 ORDER BY price LIMIT "
        "20 "
        "-- \"basket\" caf\xC3\xA9 /srv/app/cache/templates/list.html.php\n"
        "The quick brown fox jumps over the lazy dog, twice a day and never on Sundays, as it says";
    static_assert(words.size() >= 200);
    const std::size_t size = below(10) == 0 ? between(5, 200) : between(5, 56);
    return value::string(words.substr(below(words.size() - size + 1), size));
  }

  Fields scalar() {
    switch (below(8)) {
      case 0: return value::null();
      case 1: return value::boolean(below(2) == 0);
      case 2: return value::real(static_cast<double>(below(100'000)) / 100);
      case 3:
      case 4: return value::integer(static_cast<std::int64_t>(below(100'000)));
      default: return text();
    }
  }

  Fields any_value(const Function& function) {
    switch (below(12)) {
      case 0: return value::list({scalar(), scalar()});
      case 1: return value::map({{value::string("id"), scalar()}, {value::string("name"), text()}});
      case 2:
      case 3: return function.class_entry != 0 ? object(function) : scalar();
      default: return scalar();
    }
  }

  static constexpr std::uint64_t first_memory = 400'000;

  TraceBuilder& trace_;
  std::mt19937_64 random_{1};
  std::vector<Function> functions_;
  std::vector<Ref> open_;
  std::vector<Ref> open_files_;
  std::uint64_t nanoseconds_ = 0;
  std::uint64_t memory_ = first_memory;
};

}  // namespace

void add_php_like_request(std::size_t calls, TraceBuilder& trace) {
  Request request(trace);
  request.run(calls);
  request.end();
}

}  // namespace CT::Bench
