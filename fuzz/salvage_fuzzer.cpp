// SPDX-License-Identifier: MIT
//
// Any bytes, salvaged: the reader opens the result and finds nothing lost in it, and salvaging it
// again changes nothing. The same for the two halves of the bytes as sections without a header.
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctsalvage/ct_salvage.h"
#include "support.h"

namespace {

using namespace CT;

class Errors final : public FindingSink {
 public:
  void report(const Finding& finding) override {
    Fuzz::expect(finding_info(finding.kind).level != 0, "the reader has an error to tell");
  }
};

std::vector<unsigned char> joined(const Salvage::Salvaged& made) {
  std::vector<unsigned char> all;
  for (const Salvage::Bytes& part : made.parts()) all.insert(all.end(), part.begin(), part.end());
  return all;
}

void check(const Salvage::Salvaged& made) {
  const std::vector<unsigned char> bytes = joined(made);
  Errors errors;
  Trace trace;
  Fuzz::expect(trace.open(bytes.data(), bytes.size(), &errors), "the result opens");
  const Salvage::Salvaged again = Salvage::salvage(bytes);
  Fuzz::expect(again.report.is_whole, "the result is whole");
  Fuzz::expect(joined(again) == bytes, "the result stays as it is");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Salvage::Bytes bytes(data, size);
  const Salvage::Salvaged made = Salvage::salvage(bytes);
  if (made.report.is_whole) Fuzz::expect(made.whole.size() == size, "what is whole stays");
  check(made);
  check(Salvage::salvage(bytes.first(size / 2), bytes.subspan(size / 2)));
  return 0;
}
