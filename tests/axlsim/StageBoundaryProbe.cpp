// SPDX-License-Identifier: MIT
// Not built with the rest: AxlsimStages.AConfigurationFileCannotIncludeARenderHeader builds it as
// a file of the configuration stage, which links no later stage, and expects the compiler not to
// find this header.
#include "axlsim/render/TextRenderer.h"
