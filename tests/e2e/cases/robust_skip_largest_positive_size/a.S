	.text
	.skip 0x7fffffff, 1
