#pragma once
// Marks the operations that the library exports; everything else is hidden.

#if defined(ZW_DOCPARSER_BUILDING)
#define ZW_DOCPARSER_API __attribute__((visibility("default")))
#else
#define ZW_DOCPARSER_API
#endif
