#pragma once

// Everything a host needs of the component. A port's platform has a header of its own:
// platform/gtk/GtkPlatform.h or platform/headless/HeadlessPlatform.h.
#include "core/UPIAppsVO.h"
#include "core/ZorvikCheckoutOptions.h"
#include "core/ZorvikCoreApiSDK.h"
#include "platform/foundation/Console.h"
#include "platform/foundation/Value.h"
#include "platform/uikit/UIViewController.h"
#include "zorvik_mobile_kit_ios_webview_sdk/SDKVersion.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutDelegates.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"
