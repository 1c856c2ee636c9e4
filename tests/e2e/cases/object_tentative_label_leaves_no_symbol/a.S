	.globl t
	.extern u
	.type v, @function
