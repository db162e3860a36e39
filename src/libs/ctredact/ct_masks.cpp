// SPDX-License-Identifier: MIT
#include "ctredact/ct_masks.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QMessageAuthenticationCode>

namespace CT::Redact {

namespace {

QByteArray bytes_of(std::string_view text) {
  return {text.data(), static_cast<qsizetype>(text.size())};
}

}  // namespace

Masks::Masks(std::string_view key) : key_(key) {}

std::string_view Masks::of(std::string_view secret) {
  constexpr std::size_t longest_known = 256;
  constexpr std::size_t most_known = 16384;
  constexpr qsizetype shown_bytes = 4;
  const bool is_kept = secret.size() <= longest_known;
  if (is_kept) {
    const auto known = known_.find(std::string(secret));
    if (known != known_.end()) return known->second;
  }
  const QByteArray code = QMessageAuthenticationCode::hash(bytes_of(secret), bytes_of(key_),
                                                           QCryptographicHash::Sha256);
  made_ = "[secret:" + code.left(shown_bytes).toHex().toStdString() + "]";
  if (!is_kept) return made_;
  if (known_.size() >= most_known) known_.clear();
  return known_.emplace(secret, made_).first->second;
}

}  // namespace CT::Redact
