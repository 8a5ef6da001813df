#ifndef NU_FOUNDATION_BOOLEAN_H
#define NU_FOUNDATION_BOOLEAN_H

// The two-valued result and flag of the whole interface.
enum ENuBoolean { NuFalse = 0, NuTrue = 1 };

#endif
