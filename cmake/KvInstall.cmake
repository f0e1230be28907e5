# Install rules: libraries, headers under include/, and the CMake package "KvPlanData".
