// SPDX-License-Identifier: MIT
//
// A part is a range of the sorted paths that share a beginning. Splitting it goes down to where
// they part, at most as often as there are parts, so nothing depends on how deep paths are.
#include "ctmeasure/ct_areas.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "ctmeasure/ct_grouping.h"

namespace CT {

namespace {

struct Part {
  std::size_t first;  // in the sorted paths
  std::size_t last;   // behind the last one
  std::int64_t own_ns;
};

class Splitter {
 public:
  Splitter(std::vector<PathTime> paths, char separator)
      : paths_(std::move(paths)), separator_(separator) {
    std::sort(paths_.begin(), paths_.end(), [&](const PathTime& a, const PathTime& b) {
      return key_of(a.path) < key_of(b.path);
    });
  }

  std::vector<Area> run(std::size_t wanted) {
    if (paths_.empty()) return {};
    std::vector<Area> done;
    std::vector<Part> open = {part(0, paths_.size())};
    while (!open.empty()) {
      const auto largest = std::max_element(open.begin(), open.end(), has_less);
      const Part whole = *largest;
      open.erase(largest);
      std::vector<Part> parts = split(whole);
      const std::size_t others = done.size() + open.size();
      const std::size_t room = wanted > others ? wanted - others : 0;
      if (parts.size() == 1 || room < std::min(parts.size(), enough_room)) {
        done.push_back(area_of(whole));
        continue;
      }
      if (parts.size() > room) done.push_back(take_rest(parts, room - 1, whole));
      open.insert(open.end(), parts.begin(), parts.end());
    }
    std::sort(done.begin(), done.end(), [](const Area& x, const Area& y) {
      return x.own_ns != y.own_ns ? x.own_ns > y.own_ns : x.name < y.name;
    });
    return done;
  }

 private:
  // Of parts to say more than their whole does.
  static constexpr std::size_t enough_room = 3;

  static bool has_less(const Part& a, const Part& b) { return a.own_ns < b.own_ns; }

  // Leaves the largest parts and puts the others together.
  Area take_rest(std::vector<Part>& parts, std::size_t left, const Part& whole) const {
    std::stable_sort(parts.begin(), parts.end(),
                     [](const Part& a, const Part& b) { return has_less(b, a); });
    Area rest = area_of(whole);
    rest.name += " (others)";
    rest.own_ns = rest.calls = 0;
    for (std::size_t i = left; i != parts.size(); ++i) {
      const Area area = area_of(parts[i]);
      rest.own_ns += area.own_ns;
      rest.calls += area.calls;
    }
    parts.resize(left);
    return rest;
  }

  // Such that what lies below a path comes directly behind it.
  [[nodiscard]] std::string key_of(const std::string& path) const {
    std::string key = path;
    std::replace(key.begin(), key.end(), separator_, '\0');
    return key;
  }

  [[nodiscard]] Part part(std::size_t first, std::size_t last) const {
    Part made = {first, last, 0};
    for (std::size_t i = first; i != last; ++i) made.own_ns += paths_[i].own_ns;
    return made;
  }

  // Characters up to the end of the deepest folder that all of the part share.
  [[nodiscard]] std::size_t shared(const Part& whole) const {
    const std::string& first = paths_[whole.first].path;
    const std::string& last = paths_[whole.last - 1].path;
    const auto differ = std::mismatch(first.begin(), first.end(), last.begin(), last.end()).first;
    auto length = static_cast<std::size_t>(differ - first.begin());
    const bool is_end =
        length == first.size() && (length == last.size() || last[length] == separator_);
    if (is_end) return length;
    length = first.rfind(separator_, length != 0 ? length - 1 : 0);
    return length == std::string::npos ? 0 : length;
  }

  // By what comes next behind what all share; one part if nothing does.
  [[nodiscard]] std::vector<Part> split(const Part& whole) const {
    const std::size_t start = shared(whole);
    std::vector<Part> parts;
    std::size_t first = whole.first;
    for (std::size_t i = whole.first; i != whole.last; ++i) {
      if (next_of(i, start) == next_of(first, start)) continue;
      parts.push_back(part(first, i));
      first = i;
    }
    parts.push_back(part(first, whole.last));
    return parts;
  }

  [[nodiscard]] std::string_view next_of(std::size_t i, std::size_t start) const {
    const std::string_view path = paths_[i].path;
    if (start >= path.size()) return {};
    const std::size_t end = path.find(separator_, start + 1);
    return path.substr(0, end);
  }

  [[nodiscard]] Area area_of(const Part& found) const {
    Area area;
    area.own_ns = found.own_ns;
    for (std::size_t i = found.first; i != found.last; ++i) area.calls += paths_[i].calls;
    area.name = paths_[found.first].path.substr(0, shared(found));
    if (found.last - found.first > 1) area.name.append(1, separator_).append("...");
    return area;
  }

  std::vector<PathTime> paths_;
  char separator_;
};

// How evenly time is parted, in bits.
double entropy(const std::vector<Area>& areas) {
  double whole = 0;
  for (const Area& area : areas) whole += static_cast<double>(area.own_ns);
  double bits = 0;
  for (const Area& area : areas) {
    const double share = whole > 0 ? static_cast<double>(area.own_ns) / whole : 0;
    if (share > 0) bits -= share * std::log2(share);
  }
  return bits;
}

using Sums = std::map<std::string, PathTime, std::less<>>;

void add(Sums& sums, const std::string& path, const Area& more) {
  PathTime& sum = sums.try_emplace(path, PathTime{path, 0, 0}).first->second;
  sum.own_ns += more.own_ns;
  sum.calls += more.calls;
}

std::vector<PathTime> list_of(const Sums& sums) {
  std::vector<PathTime> list;
  for (const auto& [path, sum] : sums) list.push_back(sum);
  return list;
}

// Of all calls of one function.
struct Called {
  Area sum;
  NodeId sample = Storage::no_node;  // one of the calls
};

Area& area_of(Areas& found, Node::Type type) {
  switch (type) {
    case Node::Type::INCLUDE_CALL: return found.includes;
    case Node::Type::SAPI_WRITE: return found.writes;
    default: return found.request;
  }
}

// By function; what is no call goes to its area.
std::vector<Called> functions_of(const Trace& trace, const Measures& measures, Areas& found) {
  std::vector<Called> functions(trace.functions().size());
  for (NodeId id = 0; id != measures.node_count(); ++id) {
    const Measure& node = measures[id];
    if (!node.has(Measure::is_span)) continue;
    if (node.function < 0) {
      area_of(found, trace.type(id)).own_ns += measures.own(id).ns;
      continue;
    }
    Called& called = functions[static_cast<std::size_t>(node.function)];
    called.sum.own_ns += measures.own(id).ns;
    ++called.sum.calls;
    called.sample = id;
  }
  return functions;
}

}  // namespace

std::vector<Area> split_paths(std::vector<PathTime> paths, char separator, std::size_t parts) {
  return Splitter(std::move(paths), separator).run(parts);
}

Areas areas(const Trace& trace, const Measures& measures, std::size_t parts) {
  Areas found;
  Grouping folders(trace, measures, GroupBy::folder);
  Grouping namespaces(trace, measures, GroupBy::namespace_);
  const auto name_in = [](Grouping& grouping, NodeId id) -> const std::string& {
    return grouping.groups()[static_cast<std::size_t>(grouping.of(id))].name;
  };
  Sums by_folder;
  Sums by_namespace;
  const std::vector<Called> functions = functions_of(trace, measures, found);
  for (std::size_t i = 0; i != functions.size(); ++i) {
    const Called& called = functions[i];
    if (called.sample == Storage::no_node) continue;
    if (trace.functions()[i].is_user()) {
      add(by_folder, name_in(folders, called.sample), called.sum);
      add(by_namespace, name_in(namespaces, called.sample), called.sum);
    } else {
      found.builtin.own_ns += called.sum.own_ns;
      found.builtin.calls += called.sum.calls;
    }
  }
  found.user = split_paths(list_of(by_folder), '/', parts);
  std::vector<Area> other = split_paths(list_of(by_namespace), '\\', parts);
  if (entropy(other) > entropy(found.user)) {
    found.user = std::move(other);
    found.by = Areas::By::namespace_;
  }
  return found;
}

}  // namespace CT
