// Reply record to text: plain lines, text boxes and tables.

#pragma once

#include "qordex/qordexmessagestring.h"

// Decodes a reply record, whatever it holds, and prints it on standard output. A reply is invalid
// when its length is impossible, or when the first of several elements is "type" without an
// argument. For it "Invalid reply from server" is printed and kStatusExchangeFailed returned; for
// every other reply kStatusOk is returned. A reply that does not decode or has no printable form
// prints nothing.
int PrintReply(const QORDEXMessageString& reply);
