// The client: turns a command line into one request to the camera service and prints its reply.
//
//   QORDEX* client = QORDEX::Create({socketPath, configPath});
//   client->ParseArguments(argc, argv, record);  // command line to request record
//   client->SendRequest(&record);                // only if that returned 0
//   client->Destroy();
//
// Every status is 0 for success or one of the statuses below, which are also the exit statuses of
// the program. What the user is to read goes to standard output, except that a failing connect or
// send is reported on standard error.

#pragma once

#include <string>

#include "qordex/qordexmessagestring.h"

constexpr int kStatusOk = 0;
constexpr int kStatusExchangeFailed = 1;    // no link, a failed exchange or an invalid reply
constexpr int kStatusNoCommandName = 4;     // no "--" with a letter after it in the command word
constexpr int kStatusUnknownCommand = 6;    // no such module, or no such command in it
constexpr int kStatusTooFewArguments = 10;  // the command needs more arguments

struct QORDEXCreateInputData {
  std::string socketPath;  // socket on which the service listens; at most 107 bytes are used
  std::string configPath;  // JSON configuration; it may be missing or broken
};

class QORDEX {
 public:
  // Makes a client that is connected to the service. Returns null when the link cannot be set up;
  // the reason has then been printed. The caller owns the client and ends it with Destroy().
  static QORDEX* Create(QORDEXCreateInputData data);

  virtual ~QORDEX() = default;

  // Closes the link and frees the client, which must not be used afterwards.
  virtual void Destroy() = 0;

  // Fills `record`, which the caller has cleared to zero, with the request for a command line.
  // `argc` and `argv` are those of main(). `argc` 0 gives kStatusUnknownCommand; a missing module
  // or command counts as empty. On failure the record is untouched, and the reason is printed
  // unless it is kStatusTooFewArguments. A request of 4096 bytes or more is left out: the
  // record stays an empty message, and the call succeeds. Must not be called again after it has
  // succeeded, because the arguments would be added to the earlier ones.
  virtual int ParseArguments(int argc, char** argv, QORDEXMessageString& record) = 0;

  // Connects to the service at `path`. On failure the reason is printed, and the socket stays open
  // until Destroy(). Called by Initialize.
  virtual int SetupLink(std::string path) = 0;

  // Sends `record` unchanged, waits for one reply without a time-out, and prints it. Returns
  // kStatusExchangeFailed, with the reason printed, when the exchange fails or the reply is
  // invalid. PrintReply says what counts as invalid. The caller must ignore SIGPIPE, or
  // sending to a service that has closed the link ends the process.
  virtual int SendRequest(QORDEXMessageString* record) = 0;

  // Loads the configuration, fills the catalogue and sets up the link. Called once, by Create.
  virtual int Initialize(QORDEXCreateInputData data) = 0;
};
