// SPDX-License-Identifier: MIT
#include "ctcheck/ct_add_data_use.h"

#include "codetrace/model/ct_format.h"

namespace CT::Check {

namespace {

constexpr std::uint8_t built_in = 1;  // the first byte of what PHP itself defines

}  // namespace

// How large a descriptor is, and what it is called.
struct AddDataUse::Shape {
  const char* what;
  std::uint64_t size;
  std::uint64_t user_size;
  const char* cost;  // of a reference that leads to none
};

AddDataUse::AddDataUse(const FileLayout& layout, DefectList& defects)
    : layout_(layout),
      section_(layout.add_data),
      defects_(defects),
      texts_(section_.size()),
      functions_(section_.size()),
      classes_(section_.size()) {}

// Whether it is said to be in ADD DATA, and the file ends before it or within it.
bool AddDataUse::is_missing(std::uint64_t reference, std::uint64_t size) const {
  const std::uint64_t at = reference - section_.origin();
  const std::uint64_t declared = layout_.header.add_data_size;
  return reference != 0 && at < declared && declared - at >= size && section_.size() < at + size;
}

// What leads into the part of ADD DATA that a short file lacks is no defect of its own. Kept: nor
// is what leads into a section that is empty, which means nothing by definition.
void AddDataUse::out_of_range(std::uint64_t reference, const Spot& user, const char* what,
                              const char* cost) {
  const std::uint64_t declared = layout_.header.add_data_size;
  if (reference == 0 || declared == 0 || reference - section_.origin() < declared) return;
  defects_.add(Code::ref_range, user, [&] {
    Words words{std::string("the reference to ").append(what)};
    words.what.append(" leads outside of ADD DATA, which has ").append(counted(declared, "byte"));
    words.cost = cost != nullptr ? cost : std::string(what).append(" is not there");
    return words;
  });
}

// The place of one with all its bytes; null if the reader finds none.
const unsigned char* AddDataUse::descriptor(std::uint64_t reference, const Spot& user,
                                            const Shape& shape) {
  const unsigned char* const first = section_.resolve(reference);
  if (first == nullptr) {
    out_of_range(reference, user, shape.what, shape.cost);
    return nullptr;
  }
  const std::uint64_t size = *first == Format::user_defined ? shape.user_size : shape.size;
  const unsigned char* const place = section_.resolve(reference, size);
  if (place == nullptr && !is_missing(reference, size)) {
    const std::uint64_t at = reference - section_.origin();
    defects_.add(Code::descriptor_end, user, [&] {
      Words words{std::string(shape.what).append(" at ").append(place_name(Part::add_data, at))};
      words.what.append(" needs ").append(counted(size, "byte"));
      words.what.append(", ").append(std::to_string(section_.size() - at)).append(" are left");
      words.cost = shape.cost;
      return words;
    });
  }
  return place;
}

bool AddDataUse::new_function(std::uint64_t reference, const Spot& user) {
  static constexpr Shape shape = {"the function", Format::Function::size,
                                  Format::Function::user_size,
                                  "the call is left out, and its end finds no begin"};
  const unsigned char* const place = descriptor(reference, user, shape);
  if (place == nullptr) return is_missing(reference, shape.size);
  const auto at = static_cast<std::uint64_t>(place - section_.data());
  functions_.add(at);
  const auto reference_at = [&](std::size_t offset) {
    return Cursor(place + offset, section_.end(), layout_.big_endian()).u64();
  };
  const auto spot = [&](std::size_t offset) { return Spot{Part::add_data, at + offset}; };
  if (*place != Format::user_defined && *place != built_in) {
    defects_.add(Code::descriptor_type, spot(0),
                 [&] { return Words{"a function is of type " + std::to_string(*place)}; });
  }
  text(reference_at(Format::Function::name), spot(Format::Function::name), "a function's name");
  class_entry(reference_at(Format::Function::class_entry), spot(Format::Function::class_entry));
  if (*place == Format::user_defined) {
    text(reference_at(Format::Function::filename), spot(Format::Function::filename),
         "a function's file");
  }
  return true;
}

void AddDataUse::new_class(std::uint64_t reference, const Spot& user) {
  static constexpr Shape shape = {"the class", Format::Class::size, Format::Class::user_size,
                                  "the class is not known"};
  const unsigned char* const place = descriptor(reference, user, shape);
  if (place == nullptr) return;
  const auto at = static_cast<std::uint64_t>(place - section_.data());
  classes_.add(at);
  const auto reference_at = [&](std::size_t offset) {
    return Cursor(place + offset, section_.end(), layout_.big_endian()).u64();
  };
  const auto spot = [&](std::size_t offset) { return Spot{Part::add_data, at + offset}; };
  if (*place != Format::user_defined && *place != built_in) {
    defects_.add(Code::descriptor_type, spot(0),
                 [&] { return Words{"a class is of type " + std::to_string(*place)}; });
  }
  text(reference_at(Format::Class::name), spot(Format::Class::name), "a class's name");
  if (*place == Format::user_defined) {
    text(reference_at(Format::Class::filename), spot(Format::Class::filename), "a class's file");
  }
}

}  // namespace CT::Check
