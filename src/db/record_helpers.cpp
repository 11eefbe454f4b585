#include "db/database_client.h"
#include "platform/ruvo_log.h"
