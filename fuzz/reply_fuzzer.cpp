// A reply record of any bytes through decoding and printing.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "qordex/qordex.h"
#include "qordex/qordexmessagestring.h"
#include "qordex/replyprinters.h"

// The input is one byte and then the record's data. If that byte is "!", the record's length is
// what the first four bytes of the data say; otherwise it is the size of the data.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, size_t size) {
  if (size == 0) return 0;
  QORDEXMessageString reply = {};
  const std::size_t count = std::min(size - 1, sizeof(reply.data));
  std::memcpy(reply.data, input + 1, count);
  reply.length = static_cast<int32_t>(count);
  if (input[0] == '!') std::memcpy(&reply.length, reply.data, sizeof(reply.length));
  const int status = PrintReply(reply);
  if (status != kStatusOk && status != kStatusExchangeFailed) std::abort();
  return 0;
}
