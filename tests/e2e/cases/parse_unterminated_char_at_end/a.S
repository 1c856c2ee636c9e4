	.byte 1
	.byte 'a