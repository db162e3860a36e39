// SPDX-License-Identifier: MIT
#include <algorithm>

#include "ctsalvage/ct_layout.h"

namespace CT::Salvage {

Header Header::read(Bytes file) {
  Header header;
  if (file.size() < size) return header;
  Cursor cursor(file.data(), file.data() + size, true);
  constexpr std::uint8_t version = 1;
  const bool has_magic = cursor.u8() == 'C' && cursor.u8() == 'T';
  header.is_there = has_magic && file[2] == version;
  cursor = Cursor(file.data() + 3, file.data() + size, true);
  header.flags = cursor.u8();
  header.request_id = cursor.u32();
  header.php_api_version = cursor.u32();
  header.data_size = cursor.u32();
  header.add_data_size = cursor.u32();
  header.orig_data = cursor.u64();
  header.orig_add_data = cursor.u64();
  return header;
}

void Header::write(unsigned char* to) const {
  const Order order(true);
  const std::array<unsigned char, 4> lead = {'C', 'T', 1, flags};
  std::copy(lead.begin(), lead.end(), to);
  order.put(to + 4, request_id);
  order.put(to + 8, php_api_version);
  order.put(to + 12, data_size);
  order.put(to + 16, add_data_size);
  order.put(to + 20, orig_data);
  order.put(to + 28, orig_add_data);
}

}  // namespace CT::Salvage
