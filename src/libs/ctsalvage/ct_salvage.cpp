// SPDX-License-Identifier: MIT
#include "ctsalvage/ct_salvage.h"

#include <memory>

#include "ctsalvage/ct_mend.h"
#include "ctsalvage/ct_pairing.h"
#include "ctsalvage/ct_selection.h"
#include "ctsalvage/ct_whole.h"

namespace CT::Salvage {

namespace {

// So far below the end of all addresses a section that is mended may begin.
constexpr std::uint64_t highest_origin = ~std::uint64_t{0} - (std::uint64_t{1} << 33);

// Tells of everything in DATA that is in no chain.
void tell_gaps(const Layout& layout, Report& report) {
  std::uint64_t at = layout.data_begin;
  if (!layout.header.is_there && at != Header::size) at = 0;
  for (const Chain& chain : layout.chains) {
    if (chain.begin > at) report.add(Change::unreadable, at, chain.begin - at, 0);
    at = chain.end;
  }
  if (at < layout.data.size()) report.add(Change::unreadable, at, layout.data.size() - at, 0);
}

std::uint64_t count_checkpoints(const Layout& layout, const Piece& piece) {
  std::uint64_t count = 0;
  each_checkpoint(layout.data.data(), layout.order, piece.begin, piece.end,
                  [&](const Frame&, std::uint64_t) {
                    ++count;
                    return true;
                  });
  return count;
}

std::vector<Piece> place(const Layout& layout, Report& report) {
  const Looker looker(layout.data.data(), layout.data.size(), layout.order, std::nullopt,
                      std::nullopt);
  Sorted sorted = sort_places(
      looker, find_places(looker, layout.chains, layout.header.orig_data, layout.data_begin));
  for (const Piece& piece : sorted.doubled) {
    report.add(Change::doubled, piece.begin, piece.end - piece.begin,
               count_checkpoints(layout, piece));
  }
  for (std::size_t each = 1; each < sorted.pieces.size(); ++each) {
    const Piece& piece = sorted.pieces[each];
    if (piece.begin >= sorted.pieces[each - 1].begin) continue;
    report.add(Change::block_moved, piece.begin, piece.end - piece.begin,
               count_checkpoints(layout, piece));
  }
  return std::move(sorted.pieces);
}

Salvaged mend(const Layout& layout, Report report) {
  Salvaged made;
  made.report = std::move(report);
  tell_gaps(layout, made.report);
  const auto names = std::make_unique<Names>(
      Section(layout.add_data.data(), layout.add_data.size(), layout.header.orig_add_data),
      layout.order);
  const unsigned char* const file = layout.data.data();
  const std::vector<Piece> pieces = place(layout, made.report);
  const Selection selection = select(file, layout.order, pieces, *names, made.report);
  names->invent();
  Ends ends(file, layout.order, layout.header.orig_data, selection);
  Header header = layout.header;
  if (header.orig_data > highest_origin) header.orig_data = highest_origin;
  Mender mender(file, layout.order, header.orig_data, *names, made.report);
  made.data = mender.run(selection, ends);
  made.add_data = layout.add_data;
  made.appended = names->appended();
  const std::uint64_t invented = names->invented(Refers::text) +
                                 names->invented(Refers::class_entry) +
                                 names->invented(Refers::function);
  if (invented != 0) {
    made.report.add(Change::name_invented, layout.add_data_offset, 0, invented);
  }
  header.data_size = static_cast<std::uint32_t>(made.data.size());
  header.add_data_size = static_cast<std::uint32_t>(made.add_data.size() + made.appended.size());
  header.write(made.header.data());
  return made;
}

}  // namespace

std::array<Bytes, 4> Salvaged::parts() const {
  if (report.is_whole) return {whole};
  return {Bytes(header), Bytes(data), add_data, Bytes(appended)};
}

std::uint64_t Salvaged::size() const {
  std::uint64_t size = 0;
  for (const Bytes& part : parts()) size += part.size();
  return size;
}

Salvaged salvage(Bytes file) {
  Salvaged made;
  if (is_whole(file, made.report.kept)) {
    made.report.is_whole = true;
    made.whole = file;
    return made;
  }
  Report report;
  Layout layout = lay_out(file, report);
  return mend(layout, std::move(report));
}

Salvaged salvage(Bytes data, Bytes add_data) {
  Report report;
  Layout layout = lay_out(data, add_data, report);
  return mend(layout, std::move(report));
}

}  // namespace CT::Salvage
