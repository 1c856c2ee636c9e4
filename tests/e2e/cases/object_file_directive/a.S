	.file "source.c"
	nop
