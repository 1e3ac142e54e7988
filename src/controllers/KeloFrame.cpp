#include "kelo/controllers/KeloFrame.h"

#include <boost/exception/diagnostic_information.hpp>
#include <stdexcept>

#include "kelo/web/HttpAppFramework.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {

WebKeloInterface* KeloFrame::keloInterface() {
  static WebKeloInterface* plugin = web::app().getPlugin<WebKeloInterface>();
  if (plugin == nullptr) {
    throw std::logic_error("The web configuration lists no WebKeloInterface plug-in");
  }
  return plugin;
}

void KeloFrame::mapCurrentException(web::HttpResponse& resp) {
  try {
    throw;
  } catch (const tavelabi::NonExistentSessionException&) {
    resp.setStatusCode(440);
    resp.setCloseConnection(true);
  } catch (const tavelabi::AuthorizationFailure&) {
    resp.setStatusCode(403);
    resp.setCloseConnection(true);
  } catch (...) {
    resp.setStatusCode(500);
    resp.setBody(boost::current_exception_diagnostic_information(true));
    resp.setContentTypeCode(web::CT_TEXT_PLAIN);
    resp.setCloseConnection(true);
  }
}

}  // namespace halvor::kelo
