// Network ports.
#ifndef ZYMDB_COLLECT_STEPS_PORT_STEP_H
#define ZYMDB_COLLECT_STEPS_PORT_STEP_H

#include "collect/steps/step.h"

namespace zymdb::collect {

// A tree that shows no port of any network function, as the one of a container does, tells of none.
RowMaker collect_ports(const Survey& survey);

}  // namespace zymdb::collect

#endif
