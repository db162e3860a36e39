// SPDX-License-Identifier: MIT
//
// What is odd about a trace, in words.
#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_writer.h"
#include "codetrace/tree/ct_diagnostics.h"

namespace CT {

namespace {

void put_place(const Finding& finding, Writer& out) {
  out.put(Checkpoint::type_name(finding.type));
  out.put(" checkpoint at DATA offset ");
  put_unsigned(out, finding.offset);
}

void put_broken(const Finding& finding, std::string_view what, Writer& out) {
  put_place(finding, out);
  out.put(": ");
  out.put(what);
  out.put(" needs ");
  put_unsigned(out, finding.first);
  out.put(" bytes, ");
  put_unsigned(out, finding.second);
  out.put(" bytes left");
}

void put_number(std::string_view text, std::uint64_t number, Writer& out) {
  out.put(text);
  put_unsigned(out, number);
}

}  // namespace

void write_text(const Finding& finding, Writer& out) {
  const std::string_view type = Checkpoint::type_name(finding.type);
  const std::string_view node = Node::type_name(finding.node_type);
  switch (finding.kind) {
    case Finding::Kind::unknown_code:
      return put_number("Invalid checkpoint type ", finding.first, out);
    case Finding::Kind::damaged_record:
      put_place(finding, out);
      put_number(": damaged at payload offset ", finding.first, out);
      return put_number(" of ", finding.second, out);
    case Finding::Kind::broken_header_word: return put_broken(finding, "header word", out);
    case Finding::Kind::broken_payload: return put_broken(finding, "payload", out);
    case Finding::Kind::unknown_record:
      return put_number("Unknown checkpoint type ", finding.first, out);
    case Finding::Kind::second_startup: out.put("Duplicate "); break;
    case Finding::Kind::nothing_open:
      out.put(type);
      out.put(" checkpoint without ");
      out.put(Checkpoint::type_name(Checkpoint::Type::STARTUP));
      return out.put(" checkpoint");
    case Finding::Kind::wrong_class: out.put("Invalid "); break;
    case Finding::Kind::no_begin:
      out.put("No ");
      out.put(node);
      out.put(" node found with address ");
      return put_pointer(out, finding.first);
    case Finding::Kind::wrong_node:
      out.put("Expected ");
      out.put(Node::type_name(Node::Type::INCLUDE_CALL));
      out.put(" node, but got ");
      return out.put(node);
    case Finding::Kind::not_innermost:
      out.put(node);
      put_number(" node with ID ", static_cast<std::uint64_t>(finding.node), out);
      return out.put(" is not the last node in the stack");
    case Finding::Kind::not_open: return out.put("Nodes stack is corrupted");
  }
  out.put(type);
  out.put(" checkpoint");
}

}  // namespace CT
