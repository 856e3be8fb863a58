#include "qordex/sarvikmodule.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "qordex/catalogue.h"
#include "qordex/qordex.h"
#include "qordex/qordexmessage.pb.h"
#include "qordex/qordexmessagestring.h"

int SarvikModuleArgParser(CmdOption* option, QORDEXMessageString& record) {
  QORDEXMessage request;
  request.set_modulename(option->moduleName);
  request.set_moduletype(static_cast<QORDEXMessage::QDXModuleType>(option->moduleType));
  QORDEXMessage::QDXCmd* cmd = request.add_cmds();
  cmd->set_options(option->cmdName);
  for (const std::string& argument : option->args) cmd->add_arguments(argument);

  std::string bytes;
  request.SerializeToString(&bytes);

  record.reserved = 0;
  if (bytes.size() < sizeof(record.data)) {
    record.length = static_cast<int32_t>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), record.data);
  }
  return kStatusOk;
}
