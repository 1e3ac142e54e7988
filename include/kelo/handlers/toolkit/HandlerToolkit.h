#pragma once

// Everything a handler's source usually needs, in one include.
#include "kelo/Exceptions.h"
#include "kelo/handlers/http/KeloResourceAction.h"
#include "kelo/handlers/toolkit/HostReads.h"
#include "kelo/handlers/toolkit/JsonReplies.h"
#include "kelo/handlers/toolkit/QueryParameters.h"
#include "kelo/handlers/toolkit/RequestBodies.h"
