// The implementation of the client. Its operations are in qordeximpl.cpp unless a comment names
// another file.

#pragma once

#include <sys/un.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "config/interface/configload.h"
#include "qordex/catalogue.h"
#include "qordex/qordex.h"
#include "qordex/qordexmessagestring.h"

class QORDEXImpl : public QORDEX {
 public:
  ~QORDEXImpl() override;

  void Destroy() override;
  int ParseArguments(int argc, char** argv,
                     QORDEXMessageString& record) override;  // argumentparser.cpp
  int SetupLink(std::string path) override;                  // serverlink.cpp
  int SendRequest(QORDEXMessageString* record) override;     // serverlink.cpp
  int Initialize(QORDEXCreateInputData data) override;

  // The following print one block of a reply, and are in replyprinters.cpp. `title` and each line
  // must have at most 4096 bytes, none of them zero. Without a title or lines they print nothing.
  // They always return 0.

  // Prints a text box: the title, and the lines, which are cut at line feeds.
  static int PrintString(const std::string& title, const std::vector<std::string>& lines);

  // Prints a table: the title is the header, and each line is a row. Both are cut at commas. Prints
  // nothing if the header and the first row differ in their number of cells.
  static int PrintList(const std::string& title, const std::vector<std::string>& lines);

 private:
  Catalogue cmdOptions;                    // filled by Initialize
  std::unique_ptr<ConfigLoad> configLoad;  // null without a usable configuration
  int32_t sockFd = -1;                     // -1 until SetupLink has opened the socket
  sockaddr_un serverAddr = {};             // the service's address, filled by SetupLink
};
