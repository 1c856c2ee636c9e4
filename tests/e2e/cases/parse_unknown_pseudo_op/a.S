	.cfi_restore 1 ! 
	.nosuch
