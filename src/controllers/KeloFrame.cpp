#include "kelo/controllers/KeloFrame.h"

#include <boost/exception/diagnostic_information.hpp>
#include <stdexcept>

#include "tavelabi/Exceptions.h"

namespace halvor::kelo {

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
