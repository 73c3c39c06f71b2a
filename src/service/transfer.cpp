#include "service/transfer.h"

#include "wire/relay.h"

namespace updown {

namespace {

// Closes its socket, if it is one, however the transfer ends: out of memory it throws.
class GroupedSocket {
 public:
  GroupedSocket(int socket, SocketGroup* group) : socket_(socket), group_(group) {}
  ~GroupedSocket() {
    if (Connected()) {
      CloseSocket(socket_, group_);
    }
  }
  GroupedSocket(const GroupedSocket&) = delete;
  GroupedSocket& operator=(const GroupedSocket&) = delete;

  bool Connected() const { return socket_ > 0; }
  int Get() const { return socket_; }

 private:
  const int socket_;
  SocketGroup* const group_;
};

}  // namespace

int RunTaskTransfer(const FileService& service, std::string_view serverName,
                    std::uint16_t serverPort, const std::string& sessid, TransferRecord& record,
                    TransferProgress* progress, SocketGroup* group) {
  const GroupedSocket socket(ServiceConnect(serverName, serverPort, group), group);
  if (!socket.Connected()) {
    record.state.store(TransferState::Failed);
    return result::kConnection;
  }
  return service.Ops().DownloadFile(socket.Get(), sessid, record, progress);
}

}  // namespace updown
