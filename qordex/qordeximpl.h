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

  // Print one block of a reply: as a titled text box, whose lines are cut at newlines, or as a
  // table, whose header and rows are the title and the lines cut at commas. Without a title or
  // lines nothing is printed, nor is a table whose header and first row differ in their number
  // of cells. `title` and each line must have at most 4096 bytes, none of them zero. Always return
  // 0. They are in replyprinters.cpp.
  static int PrintString(const std::string& title, const std::vector<std::string>& lines);
  static int PrintList(const std::string& title, const std::vector<std::string>& lines);

 private:
  Catalogue cmdOptions;
  std::unique_ptr<ConfigLoad> configLoad;  // null without a usable configuration
  int32_t sockFd = -1;
  sockaddr_un serverAddr = {};
};
