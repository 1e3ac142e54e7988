#pragma once

// Everything a user of the web layer needs.
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/HttpFile.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpResponse.h"
#include "kelo/web/HttpSimpleControllerBase.h"
#include "kelo/web/HttpTypes.h"
#include "kelo/web/InetAddress.h"
#include "kelo/web/Log.h"
#include "kelo/web/MultiPartParser.h"
#include "kelo/web/Plugin.h"
#include "kelo/web/WebConfig.h"
#include "kelo/web/WebSocketConnection.h"
#include "kelo/web/WebSocketControllerBase.h"
