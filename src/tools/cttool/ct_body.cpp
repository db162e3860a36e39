// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_body.h"

#include <algorithm>
#include <string>

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/render/ct_text.h"
#include "ctreport/ct_base64.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

constexpr std::size_t block_size = std::size_t{48} * 1024;

// The length of the sequence that this byte begins, if it is UTF-8; 1 if it begins none.
std::size_t promised_length(unsigned char lead) {
  if (lead >= 0xF0) return 4;
  if (lead >= 0xE0) return 3;
  return lead >= 0xC0 ? 2 : 1;
}

// Bytes at the end that may be the begin of a character.
std::size_t unfinished_tail(std::string_view text) {
  const std::size_t longest = std::min<std::size_t>(text.size(), 3);
  for (std::size_t back = 1; back <= longest; ++back) {
    const auto byte = static_cast<unsigned char>(text[text.size() - back]);
    if ((byte & 0xC0) == 0x80) continue;
    return promised_length(byte) > back ? back : 0;
  }
  return 0;
}

bool is_utf8(std::string_view text) {
  const void* const bytes = text.data();
  const auto* at = static_cast<const unsigned char*>(bytes);
  const unsigned char* const end = at + text.size();
  while (at != end) {
    const std::size_t length = *at < 0x80 ? 1 : utf8_sequence_length(at, end);
    if (length == 0) return false;
    at += length;
  }
  return true;
}

// What neither commands a terminal nor needs a look at its neighbours.
bool is_plain(char c) { return (c >= ' ' && c <= '~') || c == '\n' || c == '\t'; }

void put_shown(std::string_view text, Writer& out) {
  while (!text.empty()) {
    const auto* const odd = std::find_if_not(text.begin(), text.end(), is_plain);
    out.put(text.substr(0, static_cast<std::size_t>(odd - text.begin())));
    const auto* const next = std::find_if(odd, text.end(), is_plain);
    const std::string_view run(odd, static_cast<std::size_t>(next - odd));
    if (!run.empty()) out.put(shown_text(run));
    text.remove_prefix(static_cast<std::size_t>(next - text.begin()));
  }
}

}  // namespace

void for_each_block(const Response& response, const std::function<bool(std::string_view)>& take,
                    const std::function<void(const BodyPart&)>& gap) {
  std::string block;
  const auto hand_on = [&](std::size_t kept) {
    const std::size_t size = block.size() - kept;
    if (size != 0 && !take(std::string_view(block).substr(0, size))) return false;
    block.erase(0, size);
    return true;
  };
  for (const BodyPart& write : response.writes()) {
    std::string_view left = write.body.view();
    while (!left.empty()) {
      const std::string_view part = left.substr(0, block_size - block.size());
      block += part;
      left.remove_prefix(part.size());
      if (block.size() == block_size && !hand_on(unfinished_tail(block))) return;
    }
    if (write.missing() == 0 || !gap) continue;
    if (!hand_on(0)) return;
    gap(write);
  }
  static_cast<void>(hand_on(0));
}

bool is_exact_as_text(const Response& response) {
  bool is_exact = true;
  bool is_first = true;
  for_each_block(response, [&](std::string_view block) {
    is_exact = is_utf8(block) && !(is_first && block.starts_with(byte_order_mark));
    is_first = false;
    return is_exact;
  });
  return is_exact;
}

bool put_body(const Response& response, const Style& style, Writer& out) {
  char last = '\n';
  const auto put_gap = [&](const BodyPart& write) {
    std::string note = "[the trace has not the next ";
    note += as_count(static_cast<std::int64_t>(write.missing())) + " bytes of write #" +
            std::to_string(write.id) + "]";
    if (last != '\n') out.put('\n');
    out.put(style.dim(note));
    out.put('\n');
    last = '\n';
  };
  for_each_block(
      response,
      [&](std::string_view block) {
        put_shown(block, out);
        last = block.back();
        return out.ok();
      },
      put_gap);
  return last == '\n';
}

void put_body_json(const Response& response, Writer& out) {
  bool is_first = true;
  out.put('"');
  for_each_block(response, [&](std::string_view block) {
    // A text loses a mark at its begin; only the body has one.
    if (!is_first && block.starts_with(byte_order_mark)) out.put(byte_order_mark);
    put_json_text(out, block);
    is_first = false;
    return out.ok();
  });
  out.put('"');
}

void put_body_base64(const Response& response, Writer& out) {
  Report::Base64 base64(out);
  out.put('"');
  for_each_block(response, [&](std::string_view block) {
    base64.put(block);
    return out.ok();
  });
  base64.finish();
  out.put('"');
}

void put_body_bytes(const Response& response, Writer& out) {
  for (const BodyPart& write : response.writes()) {
    out.put(write.body.view());
    if (!out.ok()) return;
  }
}

}  // namespace CT::Tool
