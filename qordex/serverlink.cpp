// The link to the service and the one exchange over it.

#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "qordex/qordex.h"
#include "qordex/qordeximpl.h"
#include "qordex/qordexmessagestring.h"
#include "qordex/replyprinters.h"

int QORDEXImpl::SetupLink(std::string path) {
  sockFd = socket(AF_UNIX, SOCK_STREAM, 0);
  if (sockFd < 0) {
    std::printf("\n Could not creat socket, errno:%d \n", errno);
    return kStatusExchangeFailed;
  }

  serverAddr = {};
  serverAddr.sun_family = AF_UNIX;
  strlcpy(serverAddr.sun_path, path.c_str(), sizeof(serverAddr.sun_path));
  if (connect(sockFd, reinterpret_cast<const sockaddr*>(&serverAddr), sizeof(serverAddr)) < 0) {
    std::perror("\n Connect fail! \n");
    return kStatusExchangeFailed;
  }
  return kStatusOk;
}

int QORDEXImpl::SendRequest(QORDEXMessageString* record) {
  if (sendto(sockFd, record, sizeof(*record), 0, nullptr, 0) < 0) {
    std::perror("\n Send Fail !!!");
    return kStatusExchangeFailed;
  }

  // The reply is what one receive returns. Bytes that have not arrived stay zero.
  QORDEXMessageString reply = {};
  const ssize_t received = recvfrom(sockFd, &reply, sizeof(reply), 0, nullptr, nullptr);
  if (received == -1) {
    std::puts("Failed to receive message from server");
    return kStatusExchangeFailed;
  }
  if (received == 0) {
    std::puts("Received nothing from server");
    return kStatusExchangeFailed;
  }
  return PrintReply(reply);
}
