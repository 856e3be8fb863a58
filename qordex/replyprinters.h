// Reply record to text: plain lines, text boxes and tables.

#pragma once

#include "qordex/qordexmessagestring.h"

// Decodes a reply record, whatever it holds, and prints it on standard output. A reply is invalid
// when its length is impossible, or when the first of several elements is "type" without an
// argument. An invalid reply prints "Invalid reply from server" and returns kStatusExchangeFailed.
// Every other reply returns kStatusOk, and prints nothing if it does not decode or has no printable
// form.
int PrintReply(const QORDEXMessageString& reply);
