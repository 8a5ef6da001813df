#ifndef NU_NU_H
#define NU_NU_H

// The whole library in one include.

#endif
