#include "zelto/platform/message_pipe.h"
