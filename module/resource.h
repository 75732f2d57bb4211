// Resource ids of the module.
#pragma once

#define IDS_PROJNAME 100
#define IDR_PLUGIN 101
#define IDS_PAGE_TITLE 102
#define IDS_PAGE_HELP 103
#define IDS_PAGE_DOC 104
#define IDR_PLUGINPP 105
#define IDD_PLUGINPP 106
#define IDS_PRESET_DEFAULT 10000
