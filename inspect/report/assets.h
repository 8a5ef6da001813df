#ifndef NU_INSPECT_ASSETS_H
#define NU_INSPECT_ASSETS_H

// The files report.css and report.js, which every report carries in itself.
extern const char* const kReportCss;
extern const char* const kReportJs;

#endif
