// SPDX-License-Identifier: MIT
//
// PlainArray: a growing array of trivially copyable elements. It grows by realloc, for which the
// system moves the pages of a large block instead of copying them, so memory is never held twice
// and a doubled block costs what is put into it.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace CT {

template <class Element>
class PlainArray {
  static_assert(std::is_trivially_copyable_v<Element>);

 public:
  PlainArray() = default;
  PlainArray(const PlainArray&) = delete;
  PlainArray& operator=(const PlainArray&) = delete;
  // What is moved from is empty.
  PlainArray(PlainArray&& other) noexcept { swap(other); }
  PlainArray& operator=(PlainArray&& other) noexcept {
    PlainArray(std::move(other)).swap(*this);
    return *this;
  }
  void swap(PlainArray& other) noexcept {
    std::swap(elements_, other.elements_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] bool empty() const { return size_ == 0; }

  // Requires: i < size(), or an array that is not empty.
  Element& operator[](std::size_t i) {
    assert(i < size_);
    return elements_[i];
  }
  const Element& operator[](std::size_t i) const {
    assert(i < size_);
    return elements_[i];
  }
  Element& back() { return (*this)[size_ - 1]; }
  const Element& back() const { return (*this)[size_ - 1]; }

  Element* begin() { return elements_.get(); }
  Element* end() { return elements_.get() + size_; }
  [[nodiscard]] const Element* begin() const { return elements_.get(); }
  [[nodiscard]] const Element* end() const { return elements_.get() + size_; }
  [[nodiscard]] auto rbegin() const { return std::make_reverse_iterator(end()); }
  [[nodiscard]] auto rend() const { return std::make_reverse_iterator(begin()); }

  // Throws std::bad_alloc, and then nothing has changed.
  void push_back(Element element) {
    if (size_ == capacity_) grow();
    elements_[size_++] = element;
  }

  // Shortens; keeps the memory. Requires: no more than size(), or an array that is not empty.
  void truncate(std::size_t size) {
    assert(size <= size_);
    size_ = size;
  }
  void pop_back() { truncate(size_ - 1); }
  void clear() { size_ = 0; }

 private:
  struct Free {
    void operator()(Element* elements) const { std::free(elements); }
  };

  void grow() {
    constexpr std::size_t first_capacity = 64;
    const std::size_t capacity = capacity_ == 0 ? first_capacity : 2 * capacity_;
    void* grown = std::realloc(elements_.get(), capacity * sizeof(Element));
    if (grown == nullptr) throw std::bad_alloc();
    static_cast<void>(elements_.release());
    elements_.reset(static_cast<Element*>(grown));
    capacity_ = capacity;
  }

  std::unique_ptr<Element[], Free> elements_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace CT
