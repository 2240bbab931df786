#include "EventClient.h"

CEventClient::~CEventClient() = default;

void CEventClient::onReceiveEvent(unsigned, bool) {}
