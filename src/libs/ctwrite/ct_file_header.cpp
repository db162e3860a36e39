// SPDX-License-Identifier: MIT
#include "ctwrite/ct_file_header.h"

#include "ctwrite/ct_encoding.h"

namespace CT::Write {

FileHeader encode_header(const Options& options, std::uint64_t data_size,
                         std::uint64_t add_data_size) noexcept {
  FileHeader header = {'C', 'T', file_version};
  constexpr std::size_t flags_at = 3;
  header[flags_at] = static_cast<std::uint8_t>((options.flags & ~big_endian_flag) |
                                               (options.big_endian ? big_endian_flag : 0));
  const Encoding big(true);
  unsigned char* to = &header[flags_at + 1];
  to = big.put(to, options.request_id);
  to = big.put(to, options.php_api_version);
  to = big.put(to, static_cast<std::uint32_t>(data_size));
  to = big.put(to, static_cast<std::uint32_t>(add_data_size));
  to = big.put(to, options.orig_data);
  big.put(to, options.orig_add_data);
  return header;
}

}  // namespace CT::Write
