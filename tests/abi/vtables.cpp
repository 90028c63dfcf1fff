// Every class whose virtual tables other binaries rely on; the compiler is asked for their layout.
#include "OrvaneService/OrvaneService.h"
#include "OrvaneServiceInvoker/OrvaneServiceInvoker.h"
#include "OrvaneServiceObserverProxy/OrvaneServiceObserverProxy.h"
