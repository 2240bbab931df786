// SPDX-License-Identifier: MIT
#include "EventClient.h"

CEventClient::~CEventClient() = default;

void CEventClient::onReceiveEvent(unsigned, bool) {}
