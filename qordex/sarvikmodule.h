// The module "sarvik".

#pragma once

#include "qordex/catalogue.h"
#include "qordex/qordexmessagestring.h"

// Registers the commands of the module in `catalogue`.
void RegisterSarvikModule(Catalogue& catalogue);

// The parser of every command of the module. Puts the request for `option` into `record`, which has
// been cleared to zero; a request of 4096 bytes or more is left out, so that the record stays an
// empty message. Always returns 0.
int SarvikModuleArgParser(CmdOption* option, QORDEXMessageString& record);
