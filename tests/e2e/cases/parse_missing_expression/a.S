	.word 1,
