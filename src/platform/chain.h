#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace updown {

// A singly linked chain that owns its nodes through their `next` field. Node has a public member
// `Pointer next`, with Pointer a std::unique_ptr or std::shared_ptr to Node.
//
// The chain is what the wire and the task list deliver: entries in the order received, appended at
// the tail, walked from the front. Freeing it takes no recursion, so its length is bounded by
// memory alone. Not synchronised: its owner says which thread or lock it belongs to.
template <typename Node, typename Pointer = std::unique_ptr<Node>>
class Chain {
 public:
  Chain() = default;
  Chain(const Chain&) = delete;
  Chain& operator=(const Chain&) = delete;
  Chain(Chain&& other) noexcept { Swap(other); }
  Chain& operator=(Chain&& other) noexcept {
    if (this != &other) {
      Clear();
      Swap(other);
    }
    return *this;
  }
  ~Chain() { Clear(); }

  bool Empty() const { return !head_; }
  std::size_t Size() const {
    std::size_t count = 0;
    for (const Node* node = First(); node != nullptr; node = node->next.get()) {
      ++count;
    }
    return count;
  }
  Node* First() const { return head_.get(); }
  const Pointer& Head() const { return head_; }

  // Appends one node (its own `next` must be empty) and returns it.
  Node* Append(Pointer node) {
    Node* added = node.get();
    if (last_ == nullptr) {
      head_ = std::move(node);
    } else {
      last_->next = std::move(node);
    }
    last_ = added;
    return added;
  }

  // Takes one node out and hands it over; an empty pointer if it is not in the chain.
  Pointer Remove(const Node* wanted) {
    Node* previous = nullptr;
    for (Pointer* link = &head_; *link; link = &(*link)->next) {
      if (link->get() != wanted) {
        previous = link->get();
        continue;
      }
      Pointer taken = std::move(*link);
      *link = std::move(taken->next);
      taken->next = nullptr;
      if (last_ == wanted) {
        last_ = previous;
      }
      return taken;
    }
    return nullptr;
  }

  void Clear() {
    while (head_) {
      Pointer rest = std::move(head_->next);
      head_->next = nullptr;
      head_ = std::move(rest);
    }
    last_ = nullptr;
  }

  // Range-for over references, front to back. The chain must not change meanwhile.
  class Iterator {
   public:
    explicit Iterator(Node* node) : node_(node) {}
    Node& operator*() const { return *node_; }
    Iterator& operator++() {
      node_ = node_->next.get();
      return *this;
    }
    bool operator!=(const Iterator& other) const { return node_ != other.node_; }

   private:
    Node* node_;
  };
  Iterator begin() const { return Iterator(head_.get()); }
  Iterator end() const { return Iterator(nullptr); }

 private:
  void Swap(Chain& other) noexcept {
    std::swap(head_, other.head_);
    std::swap(last_, other.last_);
  }

  Pointer head_;
  Node* last_ = nullptr;
};

}  // namespace updown
