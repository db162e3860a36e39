// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_text.h"

#include <array>
#include <bit>
#include <cstdint>

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

__m128i load_16(const unsigned char* p) {
  return _mm_loadu_si128(static_cast<const __m128i*>(static_cast<const void*>(p)));
}

__m128i load_8(const unsigned char* p) {
  return _mm_loadl_epi64(static_cast<const __m128i*>(static_cast<const void*>(p)));
}
#endif

// The first byte from `p` on that the form escapes or that is not ASCII. The text begins at
// `first`: what is left of it behind whole blocks is looked at in blocks that overlap.
template <class Form>
const unsigned char* skip_plain(const unsigned char* first, const unsigned char* p,
                                const unsigned char* end) {
#ifdef __SSE2__
  for (; end - p >= 16; p += 16) {
    const unsigned found = stops<Form>(load_16(p));
    if (found != 0) return p + std::countr_zero(found);
  }
  if (p != end && end - first >= 16) {
    const unsigned found = stops<Form>(load_16(end - 16)) >> (16 - (end - p));
    return found != 0 ? p + std::countr_zero(found) : end;
  }
  if (end - p >= 8) {
    const unsigned found = stops<Form>(_mm_unpacklo_epi64(load_8(p), load_8(end - 8)));
    if (found == 0) return end;
    return (found & 0xFF) != 0 ? p + std::countr_zero(found) : end - 16 + std::countr_zero(found);
  }
#endif
  while (p != end && *p < 0x80 && !Form::escapes(*p)) ++p;
  return p;
}

template <class Form>
void put_as(Writer& out, std::string_view stored) {
  stored = without_byte_order_mark(stored);
  if (stored.empty()) return;
  const auto* first = static_cast<const unsigned char*>(static_cast<const void*>(stored.data()));
  const unsigned char* end = first + stored.size();
  const unsigned char* run = first;
  const unsigned char* p = first;
  const auto put_run = [&] {
    out.put(stored.substr(stored.size() - static_cast<std::size_t>(end - run),
                          static_cast<std::size_t>(p - run)));
  };
  while (true) {
    p = skip_plain<Form>(first, p, end);
    if (p == end) break;
    if (*p >= 0x80) {
      if (const std::size_t length = utf8_sequence_length(p, end); length != 0) {
        p += length;
        continue;
      }
    }
    put_run();
    if (*p >= 0x80) {
      out.put(replacement_character);
    } else {
      Form::escape(out, *p);
    }
    run = ++p;
  }
  put_run();
}

}  // namespace

void put_text(Writer& out, std::string_view stored) { put_as<Plain>(out, stored); }

void put_escaped_text(Writer& out, std::string_view stored) { put_as<Escaped>(out, stored); }

void put_json_text(Writer& out, std::string_view stored) { put_as<Json>(out, stored); }

}  // namespace CT
