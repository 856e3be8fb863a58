#include "qordex/sarvikmodule.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "qordex/catalogue.h"
#include "qordex/qordex.h"
#include "qordex/qordexmessage.pb.h"
#include "qordex/qordexmessagestring.h"

namespace {

struct Command {
  const char* cmdName;
  const char* shortName;
  uint8_t minArgs;
};

constexpr Command kCommands[] = {
    {"help", "h", 0},
    {"inject", "i", 1},
    {"signal", "s", 1},
};

}  // namespace

int SarvikModuleArgParser(CmdOption* option, QORDEXMessageString& record) {
  QORDEXMessage request;
  request.set_modulename(option->moduleName);
  request.set_moduletype(static_cast<QORDEXMessage::QDXModuleType>(option->moduleType));
  QORDEXMessage::QDXCmd* cmd = request.add_cmds();
  cmd->set_options(option->cmdName);
  for (const std::string& argument : option->args) cmd->add_arguments(argument);

  const std::string bytes = request.SerializeAsString();

  record.reserved = 0;
  if (bytes.size() < sizeof(record.data)) {
    record.length = static_cast<int32_t>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), record.data);
  }
  return kStatusOk;
}

void RegisterSarvikModule(Catalogue& catalogue) {
  for (const Command& command : kCommands) {
    CmdOption entry;
    entry.moduleType = QORDEXMessage::SARVIK;
    entry.moduleName = "sarvik";
    entry.cmdName = command.cmdName;
    entry.shortName = command.shortName;
    entry.minArgs = command.minArgs;
    entry.parser = SarvikModuleArgParser;
    RegisterCommand(entry, catalogue);
  }
}
