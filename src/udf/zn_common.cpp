#include "zn_common.h"

const char zn_udf_1VersionString[] = "@(#)PROGRAM:zn_udf.1  PROJECT:zn_lib-1.1\n";
const double zn_udf_1VersionNumber = 1.1;
