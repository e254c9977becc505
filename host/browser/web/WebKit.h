#ifndef SONOLET_HOST_BROWSER_WEB_WEBKIT_H
#define SONOLET_HOST_BROWSER_WEB_WEBKIT_H

// The interface of web processes, which is the same for both of WebKit's.
#ifdef SONOLET_WPE
#include <wpe/webkit-web-extension.h>
#else
#include <webkit2/webkit-web-extension.h>
#endif

#endif
