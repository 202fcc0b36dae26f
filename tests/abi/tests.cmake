# Tests of this folder; paths are relative to tests/.
