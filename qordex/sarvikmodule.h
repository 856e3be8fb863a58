// Requests to the module "sarvik".

#pragma once

#include "qordex/catalogue.h"
#include "qordex/qordexmessagestring.h"

// Builds the request for `option` and its `args` into `record`, which has been cleared to zero. A
// request that takes 4096 bytes or more is not put there: the record stays an empty message.
// Always returns 0.
int SarvikModuleArgParser(CmdOption* option, QORDEXMessageString& record);
