// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

#include "codetrace/bytes/ct_cursor.h"
#include "codetrace/bytes/ct_utf8.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace CT {

namespace {

// A form says which ASCII bytes it escapes, and how.
struct Plain {
  static constexpr bool escapes(unsigned) { return false; }
  static void escape(Writer&, unsigned) {}
#ifdef __SSE2__
  static __m128i special(__m128i) { return _mm_setzero_si128(); }
#endif
};

struct Escaped {
  static constexpr bool escapes(unsigned c) {
    return c == '\t' || c == '\n' || c == '\r' || c == '"' || c == '\'';
  }
  static void escape(Writer& out, unsigned c) {
    out.put('\\');
    switch (c) {
      case '\t': out.put('t'); break;
      case '\n': out.put('n'); break;
      case '\r': out.put('r'); break;
      default: out.put(static_cast<char>(c));
    }
  }
#ifdef __SSE2__
  static __m128i special(__m128i v) {
    const auto is = [&](char c) { return _mm_cmpeq_epi8(v, _mm_set1_epi8(c)); };
    const __m128i controls = _mm_or_si128(_mm_or_si128(is('\t'), is('\n')), is('\r'));
    return _mm_or_si128(controls, _mm_or_si128(is('"'), is('\'')));
  }
#endif
};

struct Json {
  static constexpr bool escapes(unsigned c) { return c < 0x20 || c == '"' || c == '\\'; }
  static void escape(Writer& out, unsigned c) {
    static constexpr std::string_view hex = "0123456789abcdef";
    out.put('\\');
    switch (c) {
      case '\b': out.put('b'); break;
      case '\f': out.put('f'); break;
      case '\n': out.put('n'); break;
      case '\r': out.put('r'); break;
      case '\t': out.put('t'); break;
      case '"':
      case '\\': out.put(static_cast<char>(c)); break;
      default:
        out.put("u00");
        out.put(hex[c >> 4]);
        out.put(hex[c & 15]);
    }
  }
#ifdef __SSE2__
  static __m128i special(__m128i v) {
    const auto is = [&](char c) { return _mm_cmpeq_epi8(v, _mm_set1_epi8(c)); };
    const __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(v, _mm_set1_epi8(0x1F)), v);
    return _mm_or_si128(control, _mm_or_si128(is('"'), is('\\')));
  }
#endif
};

#ifdef __SSE2__
// A bit for each of 16 bytes that the form escapes or that is not ASCII.
template <class Form>
unsigned stops(__m128i v) {
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(v, Form::special(v))));
}

const __m128i* as_block(const unsigned char* p) {
  return static_cast<const __m128i*>(static_cast<const void*>(p));
}
__m128i* as_block(char* p) { return static_cast<__m128i*>(static_cast<void*>(p)); }

// Eight bytes and four.
struct Half {
  static constexpr std::size_t size = 8;
  static __m128i load(const unsigned char* p) { return _mm_loadl_epi64(as_block(p)); }
  static void store(char* to, __m128i bytes) { _mm_storel_epi64(as_block(to), bytes); }
  static __m128i join(__m128i first, __m128i last) { return _mm_unpacklo_epi64(first, last); }
};
struct Quarter {
  static constexpr std::size_t size = 4;
  static __m128i load(const unsigned char* p) { return _mm_loadu_si32(p); }
  static void store(char* to, __m128i bytes) { _mm_storeu_si32(to, bytes); }
  static __m128i join(__m128i first, __m128i last) { return _mm_unpacklo_epi32(first, last); }
};

// copy_until_stop for what is no longer than two of them, which may overlap.
template <class Part, class Form>
std::size_t copy_two(char* to, const unsigned char* p, std::size_t size) {
  const std::size_t second = size - Part::size;
  const __m128i first_bytes = Part::load(p);
  const __m128i last_bytes = Part::load(p + second);
  Part::store(to, first_bytes);
  Part::store(to + second, last_bytes);
  const unsigned found =
      stops<Form>(Part::join(first_bytes, last_bytes)) & ((1U << (2 * Part::size)) - 1);
  if (found == 0) return size;
  const auto at = static_cast<std::size_t>(std::countr_zero(found));
  return at < Part::size ? at : second + at - Part::size;
}
#endif

// Copies text until the first byte that the form escapes or that is not ASCII, and returns how many
// bytes come before that. It may write behind them, but not more than `size` bytes.
template <class Form>
std::size_t copy_until_stop(char* to, const unsigned char* p, std::size_t size) {
  std::size_t at = 0;
#ifdef __SSE2__
  constexpr std::size_t block = 16;
  for (; size - at >= block; at += block) {
    const __m128i bytes = _mm_loadu_si128(as_block(p + at));
    _mm_storeu_si128(as_block(to + at), bytes);
    const unsigned found = stops<Form>(bytes);
    if (found != 0) return at + static_cast<std::size_t>(std::countr_zero(found));
  }
  const std::size_t left = size - at;
  if (left == 0) return size;
  if (at != 0) {
    // The last whole block overlaps the one before it.
    const __m128i bytes = _mm_loadu_si128(as_block(p + size - block));
    _mm_storeu_si128(as_block(to + size - block), bytes);
    const unsigned found = stops<Form>(bytes) >> (block - left);
    return found != 0 ? at + static_cast<std::size_t>(std::countr_zero(found)) : size;
  }
  if (left >= Half::size) return copy_two<Half, Form>(to, p, size);
  if (left >= Quarter::size) return copy_two<Quarter, Form>(to, p, size);
#endif
  for (; at != size && p[at] < 0x80 && !Form::escapes(p[at]); ++at) {
    to[at] = static_cast<char>(p[at]);
  }
  return at;
}

// Puts what comes before the first byte that the form escapes or that is not ASCII; returns where
// that is.
template <class Form>
const unsigned char* put_plain(Writer& out, const unsigned char* p, const unsigned char* end) {
  while (p != end && out.ok()) {
    const std::size_t size = std::min(static_cast<std::size_t>(end - p), Writer::max_room);
    char* to = out.room(size);
    const std::size_t plain = copy_until_stop<Form>(to, p, size);
    out.advance(to + plain);
    p += plain;
    if (plain != size) return p;
  }
  return end;
}

template <class Form>
void put_as(Writer& out, std::string_view stored) {
  stored = without_byte_order_mark(stored);
  const auto* p = static_cast<const unsigned char*>(static_cast<const void*>(stored.data()));
  const unsigned char* const end = p + stored.size();
  while ((p = put_plain<Form>(out, p, end)) != end) {
    const unsigned char* const first = p;
    while (p != end && *p >= 0x80) {
      const std::size_t length = utf8_sequence_length(p, end);
      if (length == 0) break;
      p += length;
    }
    if (p != first) {
      out.put(std::string_view(Section::as_chars(first), static_cast<std::size_t>(p - first)));
    } else if (*p >= 0x80) {
      out.put(replacement_character);
      ++p;
    } else {
      Form::escape(out, *p);
      ++p;
    }
  }
}

}  // namespace

void put_text(Writer& out, std::string_view stored) { put_as<Plain>(out, stored); }

void put_escaped_text(Writer& out, std::string_view stored) { put_as<Escaped>(out, stored); }

void put_json_text(Writer& out, std::string_view stored) { put_as<Json>(out, stored); }

}  // namespace CT
