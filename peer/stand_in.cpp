#include "peer/stand_in.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <list>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "peer/relay_side.h"
#include "peer/service_side.h"
#include "peer/world.h"

namespace updown::peer {

namespace {

constexpr std::size_t kMostConnections = 512;
constexpr int kBacklog = 128;
constexpr int kReapPeriodMs = 1000;
constexpr int kNoDescriptorPauseMs = 50;

Handle Listen(std::uint16_t port) {
  Handle listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const int on = 1;
  ::setsockopt(listener.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (!listener.IsOpen() ||
      ::bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(listener.Get(), kBacklog) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot listen");
  }
  return listener;
}

std::uint16_t PortOf(const Handle& listener) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  ::getsockname(listener.Get(), reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

}  // namespace

struct StandIn::Impl {
  explicit Impl(Options options)
      : world(std::move(options)),
        listener(Listen(world.options.port)),
        port(PortOf(listener)),
        acceptor([this] { Accept(); }) {}

  ~Impl() {
    world.stop.Raise();
    acceptor.join();
  }

  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  // A connection and the thread that serves it. Only the acceptor's thread touches the list.
  struct Served {
    std::atomic<bool> over{false};
    std::thread thread;
  };

  void Accept() {
    std::list<Served> served;
    std::array<pollfd, 2> waits{pollfd{listener.Get(), POLLIN, 0},
                                pollfd{world.stop.Descriptor(), POLLIN, 0}};
    while (waits[1].revents == 0) {
      waits[0].fd = world.accepting ? listener.Get() : -1;
      ::poll(waits.data(), waits.size(), kReapPeriodMs);
      served.remove_if([](Served& one) {
        if (!one.over) return false;
        one.thread.join();
        return true;
      });
      if (!world.accepting) continue;
      Handle socket(::accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
      if (socket.IsOpen() && served.size() < kMostConnections) {
        Start(served, std::move(socket));
      } else if (!socket.IsOpen() && errno == EMFILE) {
        ::poll(&waits[1], 1, kNoDescriptorPauseMs);
      }
    }
    for (Served& one : served) one.thread.join();
  }

  void Start(std::list<Served>& served, Handle socket) {
    Served& one = served.emplace_back();
    try {
      one.thread = std::thread([this, &one, socket = std::move(socket)]() mutable {
        Serve(std::move(socket));
        one.over = true;
      });
    } catch (const std::system_error&) {
      served.pop_back();  // no thread to be had: the connection is closed
    }
  }

  void Serve(Handle socket) {
    Connection connection(std::move(socket), world.stop, world.options.fragment);
    try {
      if (ServeRelay(world, connection)) ServiceConnection(world, connection).Run();
    } catch (const std::bad_alloc&) {
      return;
    }
  }

  World world;
  Handle listener;
  const std::uint16_t port;
  std::thread acceptor;  // last: it uses all of the above
};

StandIn::StandIn(Options options) : impl_(std::make_unique<Impl>(std::move(options))) {}

StandIn::~StandIn() = default;

std::uint16_t StandIn::RelayPort() const { return impl_->port; }

std::vector<std::pair<std::string, std::string>> StandIn::Environment(int languageId) const {
  const std::string& named = impl_->world.options.identity;
  return {
      {"3C9EE1FB-5D92-425d-9774-16549105F344",
       named.empty() ? "port-" + std::to_string(impl_->port) : named},
      {"C938D64454D44264A60AF8474D6AF303", "user"},
      {"182980BB42EC4908B5DA097B293223F9", "DBDC"},
      {"B472F97F-0B9E-4cbf-A751-715DC706DF5F", std::to_string(languageId)},
      {"B99242F1C55F489fA98402890C4AA428", std::to_string(impl_->port)},
      {"3888693AABCC496aACFF5941A5C10255", "127.0.0.1"},
      {"{FC0CD139-1957-4763-8AD2-4519D8EFD888}", "1"},
      {"E543A803-0D1A-4557-905D-93291D62B5A8", "7"},
  };
}

void StandIn::AddFault(const Fault& fault) { impl_->world.faults.Add(fault); }
void StandIn::ClearFaults() {
  impl_->world.faults.Clear();
  impl_->world.delays.Clear();
}
void StandIn::SetDelay(const Delay& delay) {
  impl_->world.delays.Set(delay.message, delay.milliseconds);
}
void StandIn::SetAccepting(bool on) { impl_->world.accepting = on; }
void StandIn::SetBlockLength(std::uint32_t length) { impl_->world.blockLength = length; }
void StandIn::ForgetSessions() { impl_->world.sessions.Forget(); }

std::vector<SeenRequest> StandIn::Requests() const { return impl_->world.requests.All(); }
void StandIn::ForgetRequests() { impl_->world.requests.Clear(); }
std::uint32_t StandIn::OpenConnections() const { return impl_->world.joins.Open(); }
std::uint32_t StandIn::MostConnections() const { return impl_->world.joins.Most(); }

}  // namespace updown::peer
