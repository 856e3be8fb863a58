// The module "sarvik".

#pragma once

#include "qordex/catalogue.h"

// Registers the commands of the module in `catalogue`.
void RegisterSarvikModule(Catalogue& catalogue);
