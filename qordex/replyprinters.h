// Reply record to text: plain lines, text boxes and tables.

#pragma once

#include "qordex/qordexmessagestring.h"

// Decodes a reply record, whatever it holds, and prints it on standard output. Returns kStatusOk,
// or, after "Invalid reply from server", kStatusExchangeFailed for an impossible length and for
// blocks without a type word. A reply that does not decode or has no printable form prints nothing.
int PrintReply(const QORDEXMessageString& reply);
