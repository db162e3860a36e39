// SPDX-License-Identifier: MIT
#include "random_trace.h"

#include "awkward.h"
#include "random_damage.h"
#include "random_entities.h"
#include "random_request.h"
#include "short_inline_text.h"

namespace CT::Test {

namespace {

std::size_t checkpoint_count(Awkward& random) {
  if (random.one_in(40)) return 0;
  if (random.one_in(30)) return 200 + random.below(400);
  return 1 + random.below(random.one_in(3) ? 60 : 20);
}

std::string whole_trace(Awkward& random, RequestStyle style) {
  const ByteOrder order = random.one_in(2) ? ByteOrder::big : ByteOrder::little;
  RandomEntities entities(random, order, style.rough ? 5 + random.below(20) : 0);
  RandomRequest request(random, entities, style);
  request.write(checkpoint_count(random));
  TraceBuilder& trace = entities.trace();
  trace.set_request_id(static_cast<std::uint32_t>(random.bits()));
  trace.set_php_api(static_cast<std::uint32_t>(random.bits()));
  if (random.one_in(4)) {
    // Only one of the bits has a meaning.
    const std::size_t others = random.below(256) & ~std::size_t{2};
    const std::size_t big = order == ByteOrder::big ? 2 : 0;
    trace.set_flags(static_cast<std::uint8_t>(others | big));
  }
  return trace.build();
}

}  // namespace

std::string random_trace(std::uint64_t seed, std::uint64_t number, bool short_inline_texts) {
  Awkward random(seed * 1'000'003 + number);
  const std::size_t kind = random.below(30);
  const bool rough = kind >= 10;
  const std::string whole = whole_trace(random, {rough, short_inline_texts});
  if (kind == 10) return RandomDamage(random).outside(whole);
  if (kind < 20) return whole;
  // Damage may make such texts of anything. Then it is done once more, with other luck.
  constexpr int most_tries = 50;
  for (int tries = 0; tries != most_tries; ++tries) {
    std::string damaged = RandomDamage(random).inside(whole);
    if (short_inline_texts || !has_short_inline_text(damaged)) return damaged;
  }
  return whole;
}

}  // namespace CT::Test
