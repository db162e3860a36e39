// SPDX-License-Identifier: MIT
#include "ctsalvage/ct_chains.h"

namespace CT::Salvage {

std::vector<Chain> find_chains(const Looker& looker, std::uint64_t from, std::uint64_t most) {
  std::vector<Chain> chains;
  std::uint64_t at = from;
  while (at < looker.end() && most != 0) {
    if (!looker.begins(at)) {
      ++at;
      continue;
    }
    Chain chain = {at, looker.at(at).next};
    for (--most; most != 0; --most) {
      const Looker::Look look = looker.at(chain.end);
      if (!looker.follows(chain.end, look)) break;
      chain.end = look.next;
    }
    chains.push_back(chain);
    at = chain.end;
  }
  return chains;
}

}  // namespace CT::Salvage
