// The link to the service, the one exchange over it, and the choice of how its reply is printed.

#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "qordex/qordex.h"
#include "qordex/qordeximpl.h"
#include "qordex/qordexmessage.pb.h"
#include "qordex/qordexmessagestring.h"

namespace {

// Texts of a reply are used up to their first zero byte.
std::string Text(const std::string& field) { return field.substr(0, field.find('\0')); }

int RejectReply() {
  std::puts("Invalid reply from server");
  return kStatusLinkFailed;
}

void PrintLines(const QORDEXMessage::QDXCmd& cmd) {
  for (const std::string& argument : cmd.arguments()) std::puts(argument.c_str());
}

// Hands every element but the first to `printBlock`.
void PrintBlocks(const QORDEXMessage& reply,
                 int (*printBlock)(const std::string& title,
                                   const std::vector<std::string>& lines)) {
  for (int i = 1; i < reply.cmds_size(); ++i) {
    std::vector<std::string> lines;
    for (const std::string& argument : reply.cmds(i).arguments()) lines.push_back(Text(argument));
    printBlock(Text(reply.cmds(i).options()), lines);
  }
}

}  // namespace

int QORDEXImpl::SetupLink(std::string path) {
  sockFd = socket(AF_UNIX, SOCK_STREAM, 0);
  if (sockFd < 0) {
    std::printf("\n Could not creat socket, errno:%d \n", errno);
    return kStatusLinkFailed;
  }

  serverAddr = {};
  serverAddr.sun_family = AF_UNIX;
  strlcpy(serverAddr.sun_path, path.c_str(), sizeof(serverAddr.sun_path));
  if (connect(sockFd, reinterpret_cast<const sockaddr*>(&serverAddr), sizeof(serverAddr)) < 0) {
    std::perror("\n Connect fail! \n");
    return kStatusLinkFailed;
  }
  return kStatusOk;
}

int QORDEXImpl::SendRequest(QORDEXMessageString* record) {
  if (sendto(sockFd, record, sizeof(*record), 0, nullptr, 0) < 0) {
    std::perror("\n Send Fail !!!");
    return kStatusLinkFailed;
  }

  // One receive is the whole exchange: bytes that do not come with it stay zero.
  QORDEXMessageString reply = {};
  const ssize_t received = recvfrom(sockFd, &reply, sizeof(reply), 0, nullptr, nullptr);
  if (received == -1) {
    std::puts("Failed to receive message from server");
    return kStatusLinkFailed;
  }
  if (received == 0) {
    std::puts("Received nothing from server");
    return kStatusLinkFailed;
  }
  return PrintReply(reply);
}

int QORDEXImpl::PrintReply(const QORDEXMessageString& reply) {
  const auto capacity = static_cast<int32_t>(sizeof(reply.data));
  if (reply.length < 0 || reply.length > capacity) return RejectReply();

  QORDEXMessage message;
  const std::string bytes(reply.data, static_cast<std::size_t>(reply.length));
  if (!message.ParseFromString(bytes) || message.cmds().empty()) return kStatusOk;

  const QORDEXMessage::QDXCmd& first = message.cmds(0);
  const bool isTyped = Text(first.options()) == "type";
  if (message.cmds_size() == 1) {
    if (!isTyped) PrintLines(first);
    return kStatusOk;
  }
  if (!isTyped) return kStatusOk;

  if (first.arguments().empty()) return RejectReply();
  const std::string typeWord = Text(first.arguments(0));
  if (typeWord == "string") PrintBlocks(message, PrintString);
  if (typeWord == "list") PrintBlocks(message, PrintList);
  return kStatusOk;
}
