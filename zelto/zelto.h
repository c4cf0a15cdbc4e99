/// @file
/// Everything, for callers who do not choose.
#pragma once

#include <zelto/export.h>
#include <zelto/platform/errors.h>
#include <zelto/platform/events.h>
#include <zelto/platform/message_pipe.h>
#include <zelto/platform/process.h>
#include <zelto/platform/shared_handle.h>
