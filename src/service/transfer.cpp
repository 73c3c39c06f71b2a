#include "service/transfer.h"

#include "wire/relay.h"

namespace updown {

int RunTaskTransfer(const FileService& service, std::string_view serverName,
                    std::uint16_t serverPort, const std::string& sessid, TransferRecord& record,
                    TransferProgress* progress, SocketGroup* group) {
  const int socket = ServiceConnect(serverName, serverPort, group);
  if (socket < 1) {
    record.state.store(TransferState::Failed);
    return result::kConnection;
  }
  const int result = service.Ops().DownloadFile(socket, sessid, record, progress);
  CloseSocket(socket, group);
  return result;
}

}  // namespace updown
