#include "framework/Service.h"

Service::~Service() = default;

void Service::handleMsg(const std::string&) {}
