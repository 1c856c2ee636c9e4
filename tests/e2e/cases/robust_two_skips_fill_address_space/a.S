	.section .dp.data, "awd", @progbits
	.skip 0x20000000
	.skip 0x20000000
