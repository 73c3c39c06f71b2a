#include "service/transfer.h"

#include <cerrno>
#include <new>

#include "service/block_transfer.h"
#include "service/connection.h"

namespace updown {

TransferResult RunTaskTransfer(const FileService& service, std::string_view serverName,
                               std::uint16_t serverPort, const std::string& sessid,
                               TransferRecord& record, TransferProgress* progress,
                               SocketGroup* group, std::chrono::milliseconds silence) {
  Connection connection(group);
  if (const int opened = connection.Open(serverName, serverPort); opened != result::kOk) {
    return SettleFailure({opened, connection.LastError(), record.RemotePath()}, record, progress);
  }
  connection.SetSilenceLimit(silence);
  try {
    return service.Ops().DownloadFile(connection, sessid, record, progress);
  } catch (const std::bad_alloc&) {
    record.SetStateUnlessStopped(TransferState::Failed);
    return {result::kNotEncodable, ENOMEM, {}};
  }
}

}  // namespace updown
