	.zebsystem "main", "/sys/dir", "main.c", 42
	.zebcommand "cc -O2", "/first/dir", "x.c", 1
	.cc_top f.function, f
f:
	nop
	.zebcommand "", "/second/directory", "", 0x12345678
	.cc_bottom f.function
