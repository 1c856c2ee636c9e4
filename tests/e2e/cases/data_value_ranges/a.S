	.section .dp.data, "awd", @progbits
	.byte 255, -128, 256, -129
	.short 65535, -32768, 65536
	.word 0xffffffff, -1
	.byte 'a', 1 ? 300 $: 0
