	.section .data, "waxQ!", @progbits
	.section .data, "Z", @nobits
	.section .bss, "wa", @weird
