#include "peer/world.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace updown::peer {

namespace {

constexpr std::size_t kMostSessions = 4096;
constexpr std::size_t kMostRequestBytes = std::size_t{64} << 20;

std::size_t SizeOf(const SeenRequest& request) {
  return sizeof(SeenRequest) + request.bytes.size();
}

}  // namespace

std::string Sessions::Issue(bool authenticated) {
  const std::lock_guard lock(mutex_);
  const std::uint32_t number = ++issued_;
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "S%08u-%08x", number, number * 2654435761U);
  if (states_.size() >= kMostSessions) states_.erase(states_.begin());
  states_[text.data()] = authenticated;
  return text.data();
}

void Sessions::Authenticate(const std::string& sessid) {
  const std::lock_guard lock(mutex_);
  const auto found = states_.find(sessid);
  if (found != states_.end()) found->second = true;
}

bool Sessions::IsAuthenticated(const std::string& sessid) const {
  const std::lock_guard lock(mutex_);
  const auto found = states_.find(sessid);
  return found != states_.end() && found->second;
}

void Sessions::Forget() {
  const std::lock_guard lock(mutex_);
  states_.clear();
}

void RequestLog::Add(std::uint32_t message, View bytes) {
  SeenRequest request{message, Bytes(bytes.begin(), bytes.end())};
  const std::lock_guard lock(mutex_);
  size_ += SizeOf(request);
  requests_.push_back(std::move(request));
  while (size_ > kMostRequestBytes && requests_.size() > 1) {
    size_ -= SizeOf(requests_.front());
    requests_.pop_front();
  }
}

std::vector<SeenRequest> RequestLog::All() const {
  const std::lock_guard lock(mutex_);
  return {requests_.begin(), requests_.end()};
}

void RequestLog::Clear() {
  const std::lock_guard lock(mutex_);
  requests_.clear();
  size_ = 0;
}

Joins::Guard::Guard(Joins& joins) : joins_(joins) {
  const std::lock_guard lock(joins_.mutex_);
  ++joins_.open_;
  joins_.most_ = std::max(joins_.most_, joins_.open_);
}

Joins::Guard::~Guard() {
  const std::lock_guard lock(joins_.mutex_);
  --joins_.open_;
}

std::uint32_t Joins::Open() const {
  const std::lock_guard lock(mutex_);
  return open_;
}

std::uint32_t Joins::Most() const {
  const std::lock_guard lock(mutex_);
  return most_;
}

World::World(Options given)
    : options(std::move(given)),
      folder(options.root),
      dialect(MakeDialect(options.dialect)),
      blockLength(options.blockLength),
      sessions(options.firstSession) {
  for (const Delay& delay : options.delays) delays.Set(delay.message, delay.milliseconds);
  for (const Fault& fault : options.faults) faults.Add(fault);
}

}  // namespace updown::peer
