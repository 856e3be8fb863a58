// The socket's path, and the record that carries one serialized message in either direction. The
// record is always sent whole; its fixed size is the only framing. Both ends run on one device, so
// the integers are in the host's byte order.

#pragma once

#include <cstddef>
#include <cstdint>

constexpr char kQORDEXSocketPath[] = "/data/vendor/camera/qordex_socket";

struct QORDEXMessageString {
  int32_t reserved;  // 0 in a request, not examined in a reply
  char data[4096];   // the serialized message in the first `length` bytes
  int32_t length;    // in bytes
};

static_assert(offsetof(QORDEXMessageString, data) == 4);
static_assert(offsetof(QORDEXMessageString, length) == 4100);
static_assert(sizeof(QORDEXMessageString) == 4104);
