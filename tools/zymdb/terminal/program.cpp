#include "terminal/program.h"

#include <new>

#include "terminal/failure.h"
#include "terminal/log.h"
#include "terminal/terminal.h"

namespace zymdb::tool {

int run_program(const std::function<int()>& work) {
  prepare_standard_streams();
  leave_system_log_alone();
  try {
    return work();
  } catch (const ReaderGone&) {
    return kDone;
  } catch (const WrongInput& failure) {
    complain(failure.what());
    return kWrongUsage;
  } catch (const Different&) {
    return kFailed;
  } catch (const std::bad_alloc&) {
    complain("out of memory");
  } catch (const std::exception& failure) {
    complain(failure.what());
  }
  return kFailed;
}

}  // namespace zymdb::tool
