/// @file
/// Everything, for callers who do not choose.
#pragma once

#include <zelto/export.h>
#include <zelto/files/file_appender.h>
#include <zelto/platform/errors.h>
#include <zelto/platform/events.h>
#include <zelto/platform/files.h>
#include <zelto/platform/message_pipe.h>
#include <zelto/platform/process.h>
#include <zelto/platform/shared_handle.h>
#include <zelto/platform/timer_queue.h>
#include <zelto/text/base64.h>
#include <zelto/text/diagnostics.h>
#include <zelto/text/exceptions/closed_connection_exception.h>
#include <zelto/text/exceptions/conversion_encoding.h>
#include <zelto/text/exceptions/conversion_exception.h>
#include <zelto/text/exceptions/data_exceptions.h>
#include <zelto/text/exceptions/file_system_exception.h>
#include <zelto/text/exceptions/hresult_exception.h>
#include <zelto/text/exceptions/rsa_error.h>
#include <zelto/text/exceptions/system_error_category.h>
#include <zelto/text/exceptions/wide_filesystem_error.h>
#include <zelto/text/exceptions/win32_exception.h>
#include <zelto/text/string_utilities.h>
#include <zelto/text/url_encoding.h>
#include <zelto/text/wildcard_pattern.h>
