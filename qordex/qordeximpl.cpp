#include "qordex/qordeximpl.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

#include "config/interface/configload.h"
#include "config/interface/configloadfactory.h"
#include "qordex/qordex.h"
#include "qordex/sarvikmodule.h"

QORDEX* QORDEX::Create(QORDEXCreateInputData data) {
  QORDEX* client = new QORDEXImpl;
  if (client->Initialize(std::move(data)) != kStatusOk) {
    client->Destroy();
    std::puts("Failed to initialize QORDEXImpl object");
    return nullptr;
  }
  return client;
}

int QORDEXImpl::Initialize(QORDEXCreateInputData data) {
  configLoad.reset(CreateObject({kConfigFileTypeJson, std::move(data.configPath)}));
  RegisterSarvikModule(cmdOptions);
  sockFd = -1;
  return SetupLink(std::move(data.socketPath));
}

void QORDEXImpl::Destroy() { delete this; }

QORDEXImpl::~QORDEXImpl() { close(sockFd); }
